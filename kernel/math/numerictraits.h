#pragma once

#include <cmath>
#include <limits>

namespace qel {
namespace math {

// The scalar of scene geometry.
typedef double zReal;

// Constants the math templates write instead of literals. Only the
// floating point types the framework computes in are provided.
template<class T>
struct NumericTraits;

template<>
struct NumericTraits<double>
{
    static constexpr double Zero = 0.0;
    static constexpr double One = 1.0;
    // Values below this magnitude are treated as exactly 0 ("snapped").
    // Double precision is about 2.2e-16 relative; a product chain of
    // rotations and translations on scene-sized coordinates (up to ~1e3)
    // leaves round-off of the order of 1e-13. 1e-12 lies above that noise,
    // so a rotation by 90 degrees gives clean zeros, and far below any
    // length or angle a scene can meaningfully hold.
    static constexpr double Epsilon = 1e-12;

    // The most negative finite value: the start of a running maximum.
    static constexpr double nonpositiveMin() { return std::numeric_limits<double>::lowest(); }
    static constexpr double max() { return std::numeric_limits<double>::max(); }
    // Used to spell the type in log and exception texts.
    static constexpr const char* name() { return "double"; }
};

template<>
struct NumericTraits<float>
{
    static constexpr float Zero = 0.0f;
    static constexpr float One = 1.0f;
    // Float precision is about 1.2e-7 relative; the same reasoning as for
    // double on mesh-sized coordinates gives a few ulp of noise.
    static constexpr float Epsilon = 1e-6f;

    static constexpr float nonpositiveMin() { return std::numeric_limits<float>::lowest(); }
    static constexpr float max() { return std::numeric_limits<float>::max(); }
    static constexpr const char* name() { return "float"; }
};

// Replaces a value whose magnitude is below Epsilon by exactly Zero.
template<class T>
inline T snap(T value)
{
    return std::abs(value) < NumericTraits<T>::Epsilon ? NumericTraits<T>::Zero : value;
}

} // namespace math
} // namespace qel
