#include "module_scene/mesh/meshedgelist.h"

#include "module_scene/mesh/cmesho.h"

#include <algorithm>

namespace qel {
namespace scene {

namespace {

bool isListed(const CFaceO& face)
{
    return !face.isDeleted() && face.hasCorners();
}

struct EdgeEnds
{
    std::uint32_t lower;
    std::uint32_t upper;
};

EdgeEnds edgeEnds(const CFaceO& face, int edge, const CVertexO* base)
{
    const std::uint32_t a = static_cast<std::uint32_t>(face.v[edge] - base);
    const std::uint32_t b = static_cast<std::uint32_t>(face.v[(edge + 1) % 3] - base);
    return a < b ? EdgeEnds{a, b} : EdgeEnds{b, a};
}

bool edgeLess(const MeshEdgeList::Edge& a, const MeshEdgeList::Edge& b)
{
    return a.upper != b.upper ? a.upper < b.upper : a.faceEdge < b.faceEdge;
}

} // namespace

MeshEdgeList::MeshEdgeList(const CMeshO& mesh) : MeshEdgeList(mesh, 0, mesh.vert.size()) {}

MeshEdgeList::MeshEdgeList(const CMeshO& mesh, std::size_t firstLower, std::size_t endLower) : firstLower(firstLower)
{
    bucketStart.assign(endLower - firstLower + 1, 0);
    countEdges(mesh);
    scatterEdges(mesh);
    sortBuckets();
}

void MeshEdgeList::countEdges(const CMeshO& mesh)
{
    const CVertexO* base = mesh.vert.data();
    for (const CFaceO& face : mesh.face) {
        if (!isListed(face))
            continue;
        for (int edge = 0; edge < 3; ++edge) {
            const std::uint32_t lower = edgeEnds(face, edge, base).lower;
            if (inRange(lower))
                ++bucketStart[lower - firstLower + 1];
        }
    }
    for (std::size_t lower = 1; lower < bucketStart.size(); ++lower)
        bucketStart[lower] += bucketStart[lower - 1];
}

void MeshEdgeList::scatterEdges(const CMeshO& mesh)
{
    edges.resize(bucketStart.back());
    std::vector<std::uint32_t> next(bucketStart.begin(), bucketStart.end() - 1);
    const CVertexO* base = mesh.vert.data();
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        const CFaceO& face = mesh.face[place];
        if (!isListed(face))
            continue;
        for (int edge = 0; edge < 3; ++edge) {
            const EdgeEnds ends = edgeEnds(face, edge, base);
            if (inRange(ends.lower))
                edges[next[ends.lower - firstLower]++] = Edge{ends.upper, static_cast<std::uint32_t>(place * 3 + edge)};
        }
    }
}

// Faces were visited in storage order, so each bucket is already ordered by face; only the
// upper vertex needs sorting, and a stable insertion sort suits the few edges of a vertex.
void MeshEdgeList::sortBuckets()
{
    for (std::size_t lower = 0; lower + 1 < bucketStart.size(); ++lower) {
        Edge* first = edges.data() + bucketStart[lower];
        Edge* end = edges.data() + bucketStart[lower + 1];
        if (end - first > 32) {
            std::sort(first, end, edgeLess);
            continue;
        }
        for (Edge* current = first + 1; current < end; ++current) {
            const Edge moving = *current;
            Edge* hole = current;
            while (hole > first && edgeLess(moving, *(hole - 1))) {
                *hole = *(hole - 1);
                --hole;
            }
            *hole = moving;
        }
    }
}

} // namespace scene
} // namespace qel
