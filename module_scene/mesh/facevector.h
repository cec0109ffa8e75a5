#pragma once

#include "module_scene/mesh/cfaceo.h"
#include "module_scene/mesh/color4b.h"
#include "module_scene/mesh/facelinks.h"
#include "module_scene/mesh/wedgetexcoords.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

// The faces of a mesh with their optional per-face arrays. An enabled array always has the
// length of the face vector; a disabled one is empty. The faces point back at this object,
// so it is neither copied nor moved; a reallocation moves the faces (see MeshAllocator for
// the pointers that then need rebasing).
class FaceVector
{
public:
    typedef std::vector<CFaceO> Storage;
    typedef Storage::iterator iterator;
    typedef Storage::const_iterator const_iterator;
    typedef math::Vector<double, 3> Point;

    FaceVector() = default;
    FaceVector(const FaceVector&) = delete;
    FaceVector& operator=(const FaceVector&) = delete;

    std::size_t size() const { return faces.size(); }
    bool empty() const { return faces.empty(); }
    std::size_t capacity() const { return faces.capacity(); }
    CFaceO& operator[](std::size_t place) { return faces[place]; }
    const CFaceO& operator[](std::size_t place) const { return faces[place]; }
    CFaceO& back() { return faces.back(); }
    CFaceO* data() { return faces.data(); }
    const CFaceO* data() const { return faces.data(); }
    iterator begin() { return faces.begin(); }
    iterator end() { return faces.end(); }
    const_iterator begin() const { return faces.begin(); }
    const_iterator end() const { return faces.end(); }

    // New faces are zero with their container set; enabled arrays follow with their defaults.
    void resize(std::size_t count);
    void reserve(std::size_t count);
    void clear() { resize(0); }
    // Whether the pointer points at a face of this vector.
    bool owns(const CFaceO* face) const;

    bool isColorEnabled() const { return colorEnabled; }
    void enableColor();
    void disableColor();
    bool isMarkEnabled() const { return markEnabled; }
    void enableMark();
    void disableMark();
    bool isAuxVectorEnabled() const { return auxEnabled; }
    void enableAuxVector();
    void disableAuxVector();
    bool isVertexFaceEnabled() const { return vertexFaceEnabled; }
    void enableVertexFace();
    void disableVertexFace();
    bool isFaceFaceEnabled() const { return faceFaceEnabled; }
    void enableFaceFace();
    void disableFaceFace();
    bool isWedgeTexCoordEnabled() const { return wedgeEnabled; }
    void enableWedgeTexCoord();
    void disableWedgeTexCoord();

    std::vector<Color4b>& colors() { return colorArray; }
    const std::vector<Color4b>& colors() const { return colorArray; }
    std::vector<std::uint32_t>& marks() { return markArray; }
    const std::vector<std::uint32_t>& marks() const { return markArray; }
    std::vector<Point>& auxVectors() { return auxArray; }
    const std::vector<Point>& auxVectors() const { return auxArray; }
    std::vector<FaceLinks>& vertexFaceLinks() { return vertexFaceArray; }
    const std::vector<FaceLinks>& vertexFaceLinks() const { return vertexFaceArray; }
    std::vector<FaceLinks>& faceFaceLinks() { return faceFaceArray; }
    const std::vector<FaceLinks>& faceFaceLinks() const { return faceFaceArray; }
    std::vector<WedgeTexCoords>& wedgeTexCoords() { return wedgeArray; }
    const std::vector<WedgeTexCoords>& wedgeTexCoords() const { return wedgeArray; }

    // Exchanges all faces and optional arrays, enabled or not, with another vector. The faces
    // keep their addresses, so pointers to them stay valid; they learn their new container.
    void swap(FaceVector& other);

    // Moves the face at place `from` with its optional entries to place `to` (compaction).
    void moveFace(std::size_t from, std::size_t to);

private:
    void resizeEnabledArrays(std::size_t count);

    Storage faces;
    bool colorEnabled = false;
    bool markEnabled = false;
    bool auxEnabled = false;
    bool vertexFaceEnabled = false;
    bool faceFaceEnabled = false;
    bool wedgeEnabled = false;
    std::vector<Color4b> colorArray;
    std::vector<std::uint32_t> markArray;
    std::vector<Point> auxArray;
    std::vector<FaceLinks> vertexFaceArray;
    std::vector<FaceLinks> faceFaceArray;
    std::vector<WedgeTexCoords> wedgeArray;
};

} // namespace scene
} // namespace qel
