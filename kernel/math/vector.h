#pragma once

#include "kernel/math/numerictraits.h"
#include "kernel/util/exception.h"

#include <cmath>
#include <string>
#include <type_traits>

namespace qel {
namespace math {

// A fixed-size vector stored as its components in order. Points carry
// w = 1 and directions w = 0 in the four-component form.
template<class T, int N>
class Vector
{
    static_assert(N >= 1, "a vector has at least one component");

public:
    typedef NumericTraits<T> Traits;

    Vector()
    {
        for (int i = 0; i < N; ++i)
            values[i] = Traits::Zero;
    }

    // One argument per component: Vector<double,3>(x, y, z), Vector<double,4>(x, y, z, w).
    template<class... A,
             class = std::enable_if_t<N >= 2 && sizeof...(A) == N && (std::is_arithmetic<A>::value && ...)>>
    Vector(A... components) : values{static_cast<T>(components)...}
    {
    }

    // Takes the first components of another vector, converted to T; the
    // components it doesn't have are set to fill. Vector<double,4>(v3, 1.0)
    // makes a point of a three-component vector.
    template<class U, int M>
    explicit Vector(const Vector<U, M>& other, T fill = Traits::Zero)
    {
        for (int i = 0; i < N; ++i)
            values[i] = i < M ? static_cast<T>(other[i]) : fill;
    }

    T& operator[](int index) { return values[index]; }
    const T& operator[](int index) const { return values[index]; }
    T* data() { return values; }
    const T* data() const { return values; }
    static constexpr int size() { return N; }

    T& x() { return values[0]; }
    const T& x() const { return values[0]; }
    T& y() { static_assert(N >= 2, "no y component"); return values[1]; }
    const T& y() const { static_assert(N >= 2, "no y component"); return values[1]; }
    T& z() { static_assert(N >= 3, "no z component"); return values[2]; }
    const T& z() const { static_assert(N >= 3, "no z component"); return values[2]; }
    T& w() { static_assert(N >= 4, "no w component"); return values[3]; }
    const T& w() const { static_assert(N >= 4, "no w component"); return values[3]; }

    Vector operator+(const Vector& other) const
    {
        Vector result;
        for (int i = 0; i < N; ++i)
            result.values[i] = values[i] + other.values[i];
        return result;
    }

    // Four-component differences (points and directions) are snapped, so
    // that two copies of one point give an exact zero direction.
    Vector operator-(const Vector& other) const
    {
        Vector result;
        for (int i = 0; i < N; ++i) {
            const T difference = values[i] - other.values[i];
            result.values[i] = N == 4 ? snap(difference) : difference;
        }
        return result;
    }

    Vector operator-() const
    {
        Vector result;
        for (int i = 0; i < N; ++i)
            result.values[i] = -values[i];
        return result;
    }

    Vector operator*(T factor) const
    {
        Vector result;
        for (int i = 0; i < N; ++i)
            result.values[i] = values[i] * factor;
        return result;
    }

    Vector& operator+=(const Vector& other) { return *this = *this + other; }
    Vector& operator-=(const Vector& other) { return *this = *this - other; }
    Vector& operator*=(T factor) { return *this = *this * factor; }

    bool operator==(const Vector& other) const
    {
        for (int i = 0; i < N; ++i) {
            if (values[i] != other.values[i])
                return false;
        }
        return true;
    }
    bool operator!=(const Vector& other) const { return !(*this == other); }

    T dot(const Vector& other) const
    {
        T sum = Traits::Zero;
        for (int i = 0; i < N; ++i)
            sum += values[i] * other.values[i];
        return sum;
    }

    // Over all components, w included.
    T length() const { return std::sqrt(dot(*this)); }

    // A zero vector is left as it is.
    Vector& normalize()
    {
        const T currentLength = length();
        if (currentLength > Traits::Zero) {
            for (int i = 0; i < N; ++i)
                values[i] /= currentLength;
        }
        return *this;
    }

    Vector getNormalized() const { return Vector(*this).normalize(); }

    // Of the first three components; further components are Zero.
    Vector cross(const Vector& other) const
    {
        static_assert(N >= 3, "the cross product needs three components");
        Vector result;
        result.values[0] = values[1] * other.values[2] - values[2] * other.values[1];
        result.values[1] = values[2] * other.values[0] - values[0] * other.values[2];
        result.values[2] = values[0] * other.values[1] - values[1] * other.values[0];
        return result;
    }

    // Divides by w so that w becomes 1, each result snapped; a vector with
    // w already 1 stays bit for bit. A direction (w = 0) can't be homogenized.
    Vector& homogenize()
    {
        static_assert(N == 4, "only four-component vectors are homogenized");
        const T divisor = values[3];
        if (divisor == Traits::Zero) {
            const std::string function = std::string("qel::math::Vector<") + Traits::name() + ",4>::homogenize";
            throw qel::Exception(QStringLiteral("Vector cannot homogenized, because last element is zero."),
                                 "kernel/math/vector4", 275, function.c_str());
        }
        if (divisor != Traits::One) {
            for (int i = 0; i < N; ++i)
                values[i] = snap(values[i] / divisor);
        }
        return *this;
    }

private:
    T values[N];
};

template<class T, int N>
inline Vector<T, N> operator*(T factor, const Vector<T, N>& vector)
{
    return vector * factor;
}

} // namespace math
} // namespace qel
