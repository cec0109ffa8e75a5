#include "plugins/io/readers/cornermerger.h"

#include <algorithm>
#include <limits>

namespace qel {
namespace io {
namespace readers {

namespace {

// The table slot of a corner is fetched this many lookups ahead: far enough to arrive in
// time (measured best between 64 and 128), near enough to stay in the cache.
const std::size_t PREFETCH_DISTANCE = 64;
const std::size_t MAX_CORNERS = std::numeric_limits<std::int32_t>::max();

} // namespace

CornerMerger::CornerMerger() : corners(0), tooLarge(false) {}

void CornerMerger::expect(std::size_t triangles)
{
    if (3 * triangles > MAX_CORNERS)
        return;
    // A closed surface has about half as many points as triangles: room for an eighth more
    // spares such a mesh any copying. A soup of separate triangles, with three times as
    // many, grows the storage as it goes.
    const std::size_t expectedPoints = triangles / 2 + triangles / 8;
    mesh.positions.reserve(3 * expectedPoints);
    mesh.faces.reserve(3 * triangles);
    table = math::PointTable(triangles / 2);
}

void CornerMerger::add(const double* points, std::size_t triangles)
{
    if (tooLarge || corners + 3 * triangles > MAX_CORNERS) {
        tooLarge = true;
        return;
    }
    const std::size_t count = 3 * triangles;
    hashes.resize(count);
    for (std::size_t corner = 0; corner < count; ++corner) {
        const double* point = points + 3 * corner;
        hashes[corner] = math::PointHash::of(point[0], point[1], point[2]);
    }
    for (std::size_t corner = 0; corner < count; ++corner) {
        if (corner + PREFETCH_DISTANCE < count)
            __builtin_prefetch(table.slotFor(hashes[corner + PREFETCH_DISTANCE]));
        mesh.faces.push_back(placeOf(points + 3 * corner, hashes[corner]));
    }
    corners += count;
}

std::uint32_t CornerMerger::placeOf(const double* point, std::uint32_t hash)
{
    const std::uint32_t next = static_cast<std::uint32_t>(mesh.vertexCount());
    const double* stored = mesh.positions.data();
    const std::uint32_t place = table.findOrAdd(hash, next, [&](std::uint32_t other) {
        const double* candidate = stored + 3 * other;
        return candidate[0] == point[0] && candidate[1] == point[1] && candidate[2] == point[2];
    });
    if (place == next)
        mesh.positions.insert(mesh.positions.end(), point, point + 3);
    return place;
}

void CornerMerger::takeMesh(RawMesh& target)
{
    target = std::move(mesh);
    mesh = RawMesh();
    table = math::PointTable();
    corners = 0;
    tooLarge = false;
}

} // namespace readers
} // namespace io
} // namespace qel
