#pragma once

namespace qel {
namespace scene {

class CMeshO;

// The bounding box of a mesh.
class MeshBounds
{
public:
    // Empties bbox and widens it by every live vertex; a mesh without any stays empty.
    static void update(CMeshO& mesh);

private:
    MeshBounds() = delete;
};

} // namespace scene
} // namespace qel
