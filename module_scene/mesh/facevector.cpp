#include "module_scene/mesh/facevector.h"

#include <utility>

namespace qel {
namespace scene {

namespace {

// Sizes an enabled array to the face count; new colours are opaque white, the rest default.
template<class T>
void sizeArray(bool enabled, std::vector<T>& array, std::size_t count, const T& fill = T())
{
    if (enabled)
        array.resize(count, fill);
}

template<class T>
void releaseArray(bool& enabled, std::vector<T>& array)
{
    enabled = false;
    std::vector<T>().swap(array);
}

} // namespace

void FaceVector::resize(std::size_t count)
{
    const std::size_t oldCount = faces.size();
    faces.resize(count);
    for (std::size_t place = oldCount; place < count; ++place)
        faces[place].container = this;
    resizeEnabledArrays(count);
}

void FaceVector::reserve(std::size_t count)
{
    faces.reserve(count);
}

bool FaceVector::owns(const CFaceO* face) const
{
    return !faces.empty() && face >= faces.data() && face < faces.data() + faces.size();
}

void FaceVector::resizeEnabledArrays(std::size_t count)
{
    sizeArray(colorEnabled, colorArray, count, Color4b::white());
    sizeArray(markEnabled, markArray, count);
    sizeArray(auxEnabled, auxArray, count);
    sizeArray(vertexFaceEnabled, vertexFaceArray, count);
    sizeArray(faceFaceEnabled, faceFaceArray, count);
    sizeArray(wedgeEnabled, wedgeArray, count);
}

void FaceVector::enableColor()
{
    colorEnabled = true;
    colorArray.resize(faces.size(), Color4b::white());
}

void FaceVector::disableColor()
{
    releaseArray(colorEnabled, colorArray);
}

void FaceVector::enableMark()
{
    markEnabled = true;
    markArray.resize(faces.size());
}

void FaceVector::disableMark()
{
    releaseArray(markEnabled, markArray);
}

void FaceVector::enableAuxVector()
{
    auxEnabled = true;
    auxArray.resize(faces.size());
}

void FaceVector::disableAuxVector()
{
    releaseArray(auxEnabled, auxArray);
}

void FaceVector::enableVertexFace()
{
    vertexFaceEnabled = true;
    vertexFaceArray.resize(faces.size());
}

void FaceVector::disableVertexFace()
{
    releaseArray(vertexFaceEnabled, vertexFaceArray);
}

void FaceVector::enableFaceFace()
{
    faceFaceEnabled = true;
    faceFaceArray.resize(faces.size());
}

void FaceVector::disableFaceFace()
{
    releaseArray(faceFaceEnabled, faceFaceArray);
}

void FaceVector::enableWedgeTexCoord()
{
    wedgeEnabled = true;
    wedgeArray.resize(faces.size());
}

void FaceVector::disableWedgeTexCoord()
{
    releaseArray(wedgeEnabled, wedgeArray);
}

void FaceVector::swap(FaceVector& other)
{
    faces.swap(other.faces);
    std::swap(colorEnabled, other.colorEnabled);
    std::swap(markEnabled, other.markEnabled);
    std::swap(auxEnabled, other.auxEnabled);
    std::swap(vertexFaceEnabled, other.vertexFaceEnabled);
    std::swap(faceFaceEnabled, other.faceFaceEnabled);
    std::swap(wedgeEnabled, other.wedgeEnabled);
    colorArray.swap(other.colorArray);
    markArray.swap(other.markArray);
    auxArray.swap(other.auxArray);
    vertexFaceArray.swap(other.vertexFaceArray);
    faceFaceArray.swap(other.faceFaceArray);
    wedgeArray.swap(other.wedgeArray);
    for (CFaceO& face : faces)
        face.container = this;
    for (CFaceO& face : other.faces)
        face.container = &other;
}

void FaceVector::moveFace(std::size_t from, std::size_t to)
{
    faces[to] = faces[from];
    if (colorEnabled)
        colorArray[to] = colorArray[from];
    if (markEnabled)
        markArray[to] = markArray[from];
    if (auxEnabled)
        auxArray[to] = auxArray[from];
    if (vertexFaceEnabled)
        vertexFaceArray[to] = vertexFaceArray[from];
    if (faceFaceEnabled)
        faceFaceArray[to] = faceFaceArray[from];
    if (wedgeEnabled)
        wedgeArray[to] = wedgeArray[from];
}

} // namespace scene
} // namespace qel
