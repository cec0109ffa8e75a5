#pragma once

#include "kernel/math/vector.h"
#include "module_scene/mesh/color4b.h"

#include <cstdint>

namespace qel {
namespace scene {

class CFaceO;
class SceneVCGModel;

// One mesh vertex, stored by value in a contiguous vector. A new vertex is all zero but for
// its colour, which is opaque white. The members are ordered so that no padding is needed
// (88 bytes): large meshes hold millions of them.
class CVertexO
{
public:
    typedef math::Vector<double, 3> Point;

    enum Flag : std::uint32_t {
        DELETED = 0x1,
        // Either bit keeps normal updates away from the vertex.
        NORMAL_PROTECTED = 0x2,
        NORMAL_PROTECTED_TOO = 0x4,
        BORDER = 0x100,
        // User bits above this one are handed out by VertexUserBits.
        LAST_RESERVED = 0x200
    };

    bool isDeleted() const { return (flags & DELETED) != 0; }
    void setDeleted() { flags |= DELETED; }
    bool isNormalProtected() const { return (flags & (NORMAL_PROTECTED | NORMAL_PROTECTED_TOO)) != 0; }
    bool isBorder() const { return (flags & BORDER) != 0; }

    bool hasFlag(std::uint32_t bits) const { return (flags & bits) != 0; }
    void setFlag(std::uint32_t bits) { flags |= bits; }
    void clearFlag(std::uint32_t bits) { flags &= ~bits; }

    Point coord;
    Point normal;
    // Carried along by compaction; nothing in the module reads it.
    std::uint64_t spare = 0;
    // Head of the list of faces around this vertex; vfIndex is this vertex's corner in it.
    CFaceO* vfFace = nullptr;
    // Set when a model element takes over the mesh.
    SceneVCGModel* owner = nullptr;
    std::uint32_t flags = 0;
    int vfIndex = 0;
    // Carried along by compaction.
    std::uint32_t mark = 0;
    Color4b color = Color4b::white();
};

} // namespace scene
} // namespace qel
