#pragma once

#include <cstddef>

namespace qel {
namespace scene {

class CMeshO;

// Adjacency of a mesh. Both builders enable their array of the face vector when it is off.
class MeshTopology
{
public:
    // Face-face links from a sorted edge list: the faces sharing an edge are linked in a ring
    // in edge-list order (two faces: to each other); a border edge links back to its own face
    // and edge. Links of deleted faces are left alone.
    static void buildFaceFace(CMeshO& mesh);
    // The links of the edges whose lower vertex has a place in [firstVertex, endVertex). Calls
    // for ranges that part the vertices link every edge once and may run on different
    // threads, each writing the links of its own edges only; the array must be enabled.
    static void buildFaceFace(CMeshO& mesh, std::size_t firstVertex, std::size_t endVertex);
    // Clears every vertex's list head, then chains each live face in front of the lists of its
    // corners 0, 1, 2: the face's link of a corner takes the vertex's former head.
    static void buildVertexFace(CMeshO& mesh);

private:
    MeshTopology() = delete;
};

} // namespace scene
} // namespace qel
