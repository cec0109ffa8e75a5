#pragma once

#include "kernel/math/pointhash.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace math {

// Open addressing over the places of distinct points, for merging identical points in one
// pass instead of a sort. A slot holds the point's 32-bit hash above its place plus one,
// so that most probes settle without touching the points, and the table grows with the
// distinct points only, staying small for the caches. The points themselves live with the
// caller, who tells with `same(place)` whether a stored point equals the one looked for.
class PointTable
{
public:
    explicit PointTable(std::size_t expectedPoints = 0) : entries(tableSizeFor(expectedPoints), 0), used(0) {}

    // For fetching a slot ahead of the lookup.
    const std::uint64_t* slotFor(std::uint32_t hash) const { return &entries[hash & (entries.size() - 1)]; }

    // The place of the first stored point equal to the one looked for, or `place` after
    // storing it under that place.
    template <class Same>
    std::uint32_t findOrAdd(std::uint32_t hash, std::uint32_t place, Same same)
    {
        const std::size_t mask = entries.size() - 1;
        for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
            const std::uint64_t entry = entries[slot];
            if (entry == 0) {
                entries[slot] = (static_cast<std::uint64_t>(hash) << 32) | (place + 1u);
                if (++used * 2 > entries.size())
                    grow();
                return place;
            }
            const std::uint32_t other = static_cast<std::uint32_t>(entry) - 1u;
            if (static_cast<std::uint32_t>(entry >> 32) == hash && same(other))
                return other;
        }
    }

private:
    static std::size_t tableSizeFor(std::size_t points)
    {
        std::size_t size = 1u << 16;
        while (size < 2 * points)
            size *= 2;
        return size;
    }

    void grow()
    {
        std::vector<std::uint64_t> old(entries.size() * 2, 0);
        old.swap(entries);
        const std::size_t mask = entries.size() - 1;
        for (std::uint64_t entry : old) {
            if (entry == 0)
                continue;
            std::size_t slot = static_cast<std::uint32_t>(entry >> 32) & mask;
            while (entries[slot] != 0)
                slot = (slot + 1) & mask;
            entries[slot] = entry;
        }
    }

    std::vector<std::uint64_t> entries;
    std::size_t used;
};

} // namespace math
} // namespace qel
