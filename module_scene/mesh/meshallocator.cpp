#include "module_scene/mesh/meshallocator.h"

#include "module_scene/mesh/cmesho.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

namespace {

// Moves a pointer from one block of T to another at the same place. Done on integers: the
// old block may already be freed.
template<class T>
T* rebase(T* pointer, std::uintptr_t oldBase, T* newBase)
{
    if (!pointer)
        return nullptr;
    const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(pointer) - oldBase;
    return newBase + offset / sizeof(T);
}

void rebaseLinks(std::vector<FaceLinks>& links, std::uintptr_t oldBase, CFaceO* newBase)
{
    for (FaceLinks& entry : links) {
        for (int corner = 0; corner < 3; ++corner)
            entry.face[corner] = rebase(entry.face[corner], oldBase, newBase);
    }
}

const std::uint32_t REMOVED = 0xFFFFFFFFu;

// Old place to new place of each live face; REMOVED for deleted ones.
std::vector<std::uint32_t> liveFacePlaces(const FaceVector& faces)
{
    std::vector<std::uint32_t> places(faces.size(), REMOVED);
    std::uint32_t next = 0;
    for (std::size_t place = 0; place < faces.size(); ++place) {
        if (!faces[place].isDeleted())
            places[place] = next++;
    }
    return places;
}

// A corner on a deleted vertex becomes null rather than dangling.
CVertexO* remapVertex(CVertexO* vertex, CVertexO* base, const std::vector<std::uint32_t>& newPlace)
{
    if (!vertex)
        return nullptr;
    const std::uint32_t place = newPlace[static_cast<std::size_t>(vertex - base)];
    return place == REMOVED ? nullptr : base + place;
}

CFaceO* remapFace(CFaceO* face, const CFaceO* base, const std::vector<std::uint32_t>& places, CFaceO* newBase)
{
    if (!face)
        return nullptr;
    const std::uint32_t place = places[static_cast<std::size_t>(face - base)];
    return place == REMOVED ? nullptr : newBase + place;
}

void remapLinks(std::vector<FaceLinks>& links, std::size_t liveCount, CFaceO* base,
                const std::vector<std::uint32_t>& places)
{
    for (std::size_t place = 0; place < liveCount; ++place) {
        FaceLinks& entry = links[place];
        for (int corner = 0; corner < 3; ++corner) {
            entry.face[corner] = remapFace(entry.face[corner], base, places, base);
            if (!entry.face[corner])
                entry.index[corner] = -1;
        }
    }
}

void copyLinks(std::vector<FaceLinks>& target, const std::vector<FaceLinks>& source, const CFaceO* sourceBase,
               CFaceO* targetBase)
{
    target = source;
    for (FaceLinks& entry : target) {
        for (int corner = 0; corner < 3; ++corner) {
            if (entry.face[corner])
                entry.face[corner] = targetBase + (entry.face[corner] - sourceBase);
        }
    }
}

void enableArraysLike(FaceVector& target, const FaceVector& source)
{
    if (source.isColorEnabled())
        target.enableColor();
    if (source.isMarkEnabled())
        target.enableMark();
    if (source.isAuxVectorEnabled())
        target.enableAuxVector();
    if (source.isVertexFaceEnabled())
        target.enableVertexFace();
    if (source.isFaceFaceEnabled())
        target.enableFaceFace();
    if (source.isWedgeTexCoordEnabled())
        target.enableWedgeTexCoord();
}

void copyArrays(FaceVector& target, const FaceVector& source)
{
    if (source.isColorEnabled())
        target.colors() = source.colors();
    if (source.isMarkEnabled())
        target.marks() = source.marks();
    if (source.isAuxVectorEnabled())
        target.auxVectors() = source.auxVectors();
    if (source.isWedgeTexCoordEnabled())
        target.wedgeTexCoords() = source.wedgeTexCoords();
    if (source.isVertexFaceEnabled())
        copyLinks(target.vertexFaceLinks(), source.vertexFaceLinks(), source.data(), target.data());
    if (source.isFaceFaceEnabled())
        copyLinks(target.faceFaceLinks(), source.faceFaceLinks(), source.data(), target.data());
}

} // namespace

std::size_t MeshAllocator::addVertices(CMeshO& mesh, std::size_t count)
{
    const std::size_t first = mesh.vert.size();
    const std::uintptr_t oldBase = reinterpret_cast<std::uintptr_t>(mesh.vert.data());
    mesh.vert.resize(first + count);
    mesh.vn += static_cast<int>(count);
    CVertexO* newBase = mesh.vert.data();
    if (first > 0 && reinterpret_cast<std::uintptr_t>(newBase) != oldBase) {
        for (CFaceO& face : mesh.face) {
            for (int corner = 0; corner < 3; ++corner)
                face.v[corner] = rebase(face.v[corner], oldBase, newBase);
        }
    }
    return first;
}

std::size_t MeshAllocator::addFaces(CMeshO& mesh, std::size_t count)
{
    FaceVector& faces = mesh.face;
    const std::size_t first = faces.size();
    const std::uintptr_t oldBase = reinterpret_cast<std::uintptr_t>(faces.data());
    faces.resize(first + count);
    mesh.fn += static_cast<int>(count);
    CFaceO* newBase = faces.data();
    if (first == 0 || reinterpret_cast<std::uintptr_t>(newBase) == oldBase)
        return first;
    for (CVertexO& vertex : mesh.vert)
        vertex.vfFace = rebase(vertex.vfFace, oldBase, newBase);
    if (faces.isVertexFaceEnabled())
        rebaseLinks(faces.vertexFaceLinks(), oldBase, newBase);
    if (faces.isFaceFaceEnabled())
        rebaseLinks(faces.faceFaceLinks(), oldBase, newBase);
    return first;
}

void MeshAllocator::compactVertices(CMeshO& mesh)
{
    const std::size_t liveCount = static_cast<std::size_t>(mesh.vn);
    if (liveCount == mesh.vert.size())
        return;
    std::vector<std::uint32_t> newPlace(mesh.vert.size(), REMOVED);
    std::size_t next = 0;
    for (std::size_t place = 0; place < mesh.vert.size(); ++place) {
        if (mesh.vert[place].isDeleted())
            continue;
        if (next != place)
            mesh.vert[next] = mesh.vert[place];
        newPlace[place] = static_cast<std::uint32_t>(next++);
    }
    CVertexO* base = mesh.vert.data();
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        for (int corner = 0; corner < 3; ++corner)
            face.v[corner] = remapVertex(face.v[corner], base, newPlace);
    }
    mesh.vert.resize(liveCount);
}

void MeshAllocator::compactFaces(CMeshO& mesh)
{
    FaceVector& faces = mesh.face;
    const std::size_t liveCount = static_cast<std::size_t>(mesh.fn);
    if (liveCount == faces.size())
        return;
    const std::vector<std::uint32_t> places = liveFacePlaces(faces);
    for (std::size_t place = 0; place < faces.size(); ++place) {
        if (places[place] != REMOVED && places[place] != place)
            faces.moveFace(place, places[place]);
    }
    CFaceO* base = faces.data();
    for (CVertexO& vertex : mesh.vert) {
        vertex.vfFace = remapFace(vertex.vfFace, base, places, base);
        if (!vertex.vfFace)
            vertex.vfIndex = 0;
    }
    const std::size_t movedCount = std::min(liveCount, faces.size());
    if (faces.isVertexFaceEnabled())
        remapLinks(faces.vertexFaceLinks(), movedCount, base, places);
    if (faces.isFaceFaceEnabled())
        remapLinks(faces.faceFaceLinks(), movedCount, base, places);
    faces.resize(liveCount);
}

void MeshAllocator::copyMesh(CMeshO& target, const CMeshO& source)
{
    target.clear();
    target.vert = source.vert;
    enableArraysLike(target.face, source.face);
    target.face.resize(source.face.size());
    const CVertexO* sourceVertices = source.vert.data();
    CVertexO* targetVertices = target.vert.data();
    const CFaceO* sourceFaces = source.face.data();
    CFaceO* targetFaces = target.face.data();
    for (std::size_t place = 0; place < source.face.size(); ++place) {
        const CFaceO& from = source.face[place];
        CFaceO& to = target.face[place];
        for (int corner = 0; corner < 3; ++corner)
            to.v[corner] = from.v[corner] ? targetVertices + (from.v[corner] - sourceVertices) : nullptr;
        to.flags = from.flags;
        to.normal = from.normal;
    }
    for (CVertexO& vertex : target.vert) {
        if (vertex.vfFace)
            vertex.vfFace = targetFaces + (vertex.vfFace - sourceFaces);
    }
    copyArrays(target.face, source.face);
    target.vn = source.vn;
    target.fn = source.fn;
    target.bbox = source.bbox;
    target.sfn = source.sfn;
    target.Tr = source.Tr;
}

} // namespace scene
} // namespace qel
