#pragma once

#include <cstdint>
#include <cstring>

namespace qel {
namespace math {

// A 32-bit hash of three exact coordinates, for hash tables that merge identical points.
// Coordinates that compare equal hash equal: -0 and +0 give the same value.
struct PointHash
{
    static std::uint32_t of(double x, double y, double z)
    {
        const std::uint64_t hash = mix(bitsOf(x) ^ mix(bitsOf(y) ^ mix(bitsOf(z))));
        return static_cast<std::uint32_t>(hash >> 32);
    }

    static std::uint64_t bitsOf(double value)
    {
        // Adding +0 turns -0 into +0.
        value += 0.0;
        std::uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }

    // A finaliser with full avalanche, so that neighbouring grid points spread over the table.
    static std::uint64_t mix(std::uint64_t value)
    {
        value ^= value >> 33;
        value *= 0xff51afd7ed558ccdULL;
        value ^= value >> 33;
        value *= 0xc4ceb9fe1a85ec53ULL;
        value ^= value >> 33;
        return value;
    }
};

} // namespace math
} // namespace qel
