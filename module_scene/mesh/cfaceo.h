#pragma once

#include "kernel/math/vector.h"

#include <cstddef>
#include <cstdint>

namespace qel {
namespace scene {

class CVertexO;
class FaceVector;
struct Color4b;
struct FaceLinks;
struct WedgeTexCoords;

// One triangle. Its optional components live in arrays of the face vector that holds it, at
// the face's place in that vector; the face reaches them through its container pointer.
class CFaceO
{
public:
    typedef math::Vector<double, 3> Point;

    enum Flag : std::uint32_t {
        DELETED = 0x1,
        // Keeps the face out of the vertex normal sum.
        NO_VERTEX_NORMAL = 0x2,
        SELECTED = 0x20,
        BORDER_EDGE_0 = 0x40,
        BORDER_EDGE_1 = 0x80,
        BORDER_EDGE_2 = 0x100,
        // The face selection of a model element.
        ELEMENT_SELECTED = 0x40000
    };

    // The border bit of edge 0, 1 or 2 (edge i runs from corner i to corner (i + 1) % 3).
    static std::uint32_t borderFlag(int edge) { return BORDER_EDGE_0 << edge; }

    bool isDeleted() const { return (flags & DELETED) != 0; }
    void setDeleted() { flags |= DELETED; }
    bool isBorder(int edge) const { return (flags & borderFlag(edge)) != 0; }
    // False only for a face whose corners were never set or point at removed vertices.
    bool hasCorners() const { return v[0] && v[1] && v[2]; }

    bool hasFlag(std::uint32_t bits) const { return (flags & bits) != 0; }
    void setFlag(std::uint32_t bits) { flags |= bits; }
    void clearFlag(std::uint32_t bits) { flags &= ~bits; }

    // The place of this face in its vector.
    std::size_t index() const;

    // Optional components; each needs its array to be enabled in the face vector.
    Color4b& color();
    const Color4b& color() const;
    std::uint32_t& mark();
    Point& auxVector();
    FaceLinks& vertexFaceLinks();
    FaceLinks& faceFaceLinks();
    const FaceLinks& faceFaceLinks() const;
    WedgeTexCoords& wedgeTexCoords();

    FaceVector* container = nullptr;
    CVertexO* v[3] = {nullptr, nullptr, nullptr};
    std::uint32_t flags = 0;
    Point normal;
};

} // namespace scene
} // namespace qel
