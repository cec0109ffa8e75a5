#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

class CMeshO;

// The edges of the live faces of a mesh, sorted by their two vertices (lower place first)
// and then by face and edge number, so that twin edges lie next to each other. The sort is
// a counting sort on the lower vertex followed by a small sort per vertex: linear in the
// face count, with 8 bytes per edge and 4 per vertex.
class MeshEdgeList
{
public:
    struct Edge
    {
        // Place of the higher of the two vertices.
        std::uint32_t upper;
        // Place of the face times 3 plus the edge number (edge i runs from corner i to i + 1).
        std::uint32_t faceEdge;

        std::size_t facePlace() const { return faceEdge / 3; }
        int edge() const { return static_cast<int>(faceEdge % 3); }
    };

    explicit MeshEdgeList(const CMeshO& mesh);
    // Only the edges whose lower vertex has a place in [firstLower, endLower): the lists of
    // ranges that part the vertices hold each edge once, so they can be built side by side.
    MeshEdgeList(const CMeshO& mesh, std::size_t firstLower, std::size_t endLower);

    // Calls visit(const Edge* first, std::size_t count) once for each group of edges that join
    // the same two vertices, in sorted order. A group of one is a border edge.
    template<class Visitor>
    void forEachTwinGroup(Visitor visit) const
    {
        for (std::size_t lower = 0; lower + 1 < bucketStart.size(); ++lower) {
            std::size_t first = bucketStart[lower];
            const std::size_t end = bucketStart[lower + 1];
            while (first < end) {
                std::size_t last = first + 1;
                while (last < end && edges[last].upper == edges[first].upper)
                    ++last;
                visit(&edges[first], last - first);
                first = last;
            }
        }
    }

    std::size_t size() const { return edges.size(); }

private:
    bool inRange(std::uint32_t lower) const { return lower - firstLower < bucketStart.size() - 1; }
    void countEdges(const CMeshO& mesh);
    void scatterEdges(const CMeshO& mesh);
    void sortBuckets();

    std::size_t firstLower;
    // Where the edges of each lower vertex of the range start; one more entry than vertices.
    std::vector<std::uint32_t> bucketStart;
    std::vector<Edge> edges;
};

} // namespace scene
} // namespace qel
