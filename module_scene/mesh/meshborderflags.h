#pragma once

namespace qel {
namespace scene {

class CMeshO;

// Border flags of face edges and vertices. Both ways give the same flags; an edge shared by
// more than two faces is not a border.
class MeshBorderFlags
{
public:
    // An edge of a live face is a border when its face-face link leads back to the face; the
    // face-face links must be built.
    static void fromFaceFace(CMeshO& mesh);
    // An edge of a live face is a border when no other live face has it (sorted edge list).
    static void fromEdgeList(CMeshO& mesh);

private:
    MeshBorderFlags() = delete;
    // Clears the border bit of every vertex and sets it on both ends of each border edge.
    static void updateVertexFlags(CMeshO& mesh);
};

} // namespace scene
} // namespace qel
