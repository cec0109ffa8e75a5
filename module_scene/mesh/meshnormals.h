#pragma once

namespace qel {
namespace scene {

class CMeshO;

// Face and vertex normals of the live elements of a mesh.
class MeshNormals
{
public:
    // Face normals (b - a) x (c - a), normalised when not zero; vertex normals stay as they are
    // (a file that brought its own keeps them).
    static void updateFaceNormals(CMeshO& mesh);
    // Vertex normals as the sum of the raw normals of the faces around them, so weighted by
    // area, then normalised; face normals normalised too. Vertices with a protected normal are
    // left alone, and faces flagged NO_VERTEX_NORMAL add nothing.
    static void updateVertexAndFaceNormals(CMeshO& mesh);

private:
    MeshNormals() = delete;
    static void updateRawFaceNormals(CMeshO& mesh);
};

} // namespace scene
} // namespace qel
