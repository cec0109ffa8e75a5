#include "module_scene/mesh/meshcleaner.h"

#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/vertexuserbits.h"

#include <algorithm>
#include <cstring>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

namespace {

// A vertex as a sort key: the coordinates as integers that sort as the doubles do, copied so
// that the sort runs on contiguous memory with plain integer comparisons.
struct VertexKey
{
    std::uint64_t z;
    std::uint64_t y;
    std::uint64_t x;
    std::uint32_t place;
    std::uint32_t deleted;
};

// Flips the bits of a double so that unsigned order is numeric order. -0 is taken as +0, so
// that the two, which compare equal, fall together; NaNs sort by their bits and equal nothing.
std::uint64_t orderedBits(double value)
{
    if (value == 0.0)
        value = 0.0;
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const std::uint64_t signBit = std::uint64_t(1) << 63;
    return (bits & signBit) ? ~bits : (bits | signBit);
}

bool keyLess(const VertexKey& a, const VertexKey& b)
{
    if (a.z != b.z)
        return a.z < b.z;
    if (a.y != b.y)
        return a.y < b.y;
    if (a.x != b.x)
        return a.x < b.x;
    // Among equal points the live ones come first, each group in storage order.
    if (a.deleted != b.deleted)
        return a.deleted < b.deleted;
    return a.place < b.place;
}

bool samePoint(const CVertexO& a, const CVertexO& b)
{
    return a.coord.x() == b.coord.x() && a.coord.y() == b.coord.y() && a.coord.z() == b.coord.z();
}

std::vector<VertexKey> sortedVertexKeys(const CMeshO& mesh)
{
    std::vector<VertexKey> keys(mesh.vert.size());
    for (std::size_t place = 0; place < mesh.vert.size(); ++place) {
        const CVertexO& vertex = mesh.vert[place];
        keys[place] = VertexKey{orderedBits(vertex.coord.z()), orderedBits(vertex.coord.y()),
                                orderedBits(vertex.coord.x()), static_cast<std::uint32_t>(place),
                                vertex.isDeleted() ? 1u : 0u};
    }
    std::sort(keys.begin(), keys.end(), keyLess);
    return keys;
}

void rewriteCorners(CMeshO& mesh, const std::vector<std::uint32_t>& survivor)
{
    CVertexO* base = mesh.vert.data();
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            if (face.v[corner])
                face.v[corner] = base + survivor[static_cast<std::size_t>(face.v[corner] - base)];
        }
    }
}

} // namespace

int MeshCleaner::removeDuplicateVertices(CMeshO& mesh, bool removeDegenerateFaces)
{
    if (mesh.vert.empty() || mesh.vn == 0)
        return 0;
    const std::vector<VertexKey> keys = sortedVertexKeys(mesh);
    std::vector<std::uint32_t> survivor(mesh.vert.size());
    for (std::size_t place = 0; place < survivor.size(); ++place)
        survivor[place] = static_cast<std::uint32_t>(place);

    int merged = 0;
    std::uint32_t reference = keys[0].place;
    for (std::size_t entry = 1; entry < keys.size(); ++entry) {
        const std::uint32_t current = keys[entry].place;
        CVertexO& vertex = mesh.vert[current];
        const CVertexO& referenceVertex = mesh.vert[reference];
        if (!vertex.isDeleted() && !referenceVertex.isDeleted() && samePoint(vertex, referenceVertex)) {
            survivor[current] = reference;
            vertex.setDeleted();
            --mesh.vn;
            ++merged;
        } else {
            reference = current;
        }
    }
    rewriteCorners(mesh, survivor);
    if (removeDegenerateFaces)
        MeshCleaner::removeDegenerateFaces(mesh);
    return merged;
}

int MeshCleaner::removeDegenerateFaces(CMeshO& mesh)
{
    int removed = 0;
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        if (face.v[0] == face.v[1] || face.v[1] == face.v[2] || face.v[2] == face.v[0]) {
            face.setDeleted();
            --mesh.fn;
            ++removed;
        }
    }
    return removed;
}

int MeshCleaner::removeUnreferencedVertices(CMeshO& mesh)
{
    const std::uint32_t referenced = VertexUserBits::newBit();
    for (CVertexO& vertex : mesh.vert)
        vertex.clearFlag(referenced);
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            if (face.v[corner])
                face.v[corner]->setFlag(referenced);
        }
    }
    int removed = 0;
    for (CVertexO& vertex : mesh.vert) {
        if (!vertex.isDeleted() && !vertex.hasFlag(referenced)) {
            vertex.setDeleted();
            --mesh.vn;
            ++removed;
        }
    }
    VertexUserBits::deleteBit(referenced);
    return removed;
}

} // namespace scene
} // namespace qel
