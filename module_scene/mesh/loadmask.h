#pragma once

namespace qel {
namespace scene {

// Bits of the load mask with which an import plug-in tells what its file delivered. The
// values named here are those the module reads; further bits are the plug-ins' own.
class LoadMask
{
public:
    static constexpr int NOTHING = 0;
    static constexpr int VERTEX_COLOR = 0x4;
    // The file delivered vertex normals: the load keeps them.
    static constexpr int VERTEX_NORMAL = 0x10;
    // Face colours: MeshModel::Enable switches the colour array on.
    static constexpr int FACE_COLOR = 0x100;
    static constexpr int FACE_NORMAL = 0x200;
    // Wedge texture coordinates: MeshModel::Enable switches the wedge array on.
    static constexpr int WEDGE_TEXCOORD = 0x1000;

protected:
    LoadMask() = default;
    ~LoadMask() = default;
};

} // namespace scene
} // namespace qel
