#pragma once

#include <cstddef>

namespace qel {
namespace scene {

class CMeshO;

// Growth, compaction and copying of meshes, keeping every pointer between vertices, faces
// and the optional face arrays valid.
class MeshAllocator
{
public:
    // Appends live vertices and returns the place of the first. Face corners are rebased when
    // the vertex storage moved.
    static std::size_t addVertices(CMeshO& mesh, std::size_t count);
    // Appends live faces (enabled arrays follow) and returns the place of the first. Face
    // pointers in vertices and adjacency arrays are rebased when the face storage moved.
    static std::size_t addFaces(CMeshO& mesh, std::size_t count);

    // Moves the live vertices down in their order and shrinks the vector to vn; corners of
    // live faces follow. Nothing happens when vn equals the vector's size.
    static void compactVertices(CMeshO& mesh);
    // The same for faces and their optional arrays, shrunk to fn. Vertex-face and face-face
    // links follow; a link to a deleted face becomes null.
    static void compactFaces(CMeshO& mesh);

    // Makes target an exact copy of source (flags, deleted entries, enabled arrays, links).
    static void copyMesh(CMeshO& target, const CMeshO& source);

private:
    MeshAllocator() = delete;
};

} // namespace scene
} // namespace qel
