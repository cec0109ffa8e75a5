#include "module_scene/mesh/meshnormals.h"

#include "module_scene/mesh/cmesho.h"

namespace qel {
namespace scene {

namespace {

CFaceO::Point rawNormal(const CFaceO& face)
{
    const CVertexO::Point& a = face.v[0]->coord;
    return (face.v[1]->coord - a).cross(face.v[2]->coord - a);
}

bool isUsable(const CFaceO& face)
{
    return !face.isDeleted() && face.hasCorners();
}

bool takesFaceNormals(const CVertexO& vertex)
{
    return !vertex.isDeleted() && !vertex.isNormalProtected();
}

} // namespace

void MeshNormals::updateFaceNormals(CMeshO& mesh)
{
    for (CFaceO& face : mesh.face) {
        if (isUsable(face))
            face.normal = rawNormal(face).normalize();
    }
}

void MeshNormals::updateRawFaceNormals(CMeshO& mesh)
{
    for (CFaceO& face : mesh.face) {
        if (isUsable(face))
            face.normal = rawNormal(face);
    }
}

void MeshNormals::updateVertexAndFaceNormals(CMeshO& mesh)
{
    updateRawFaceNormals(mesh);
    for (CVertexO& vertex : mesh.vert) {
        if (takesFaceNormals(vertex))
            vertex.normal = CVertexO::Point();
    }
    for (const CFaceO& face : mesh.face) {
        if (!isUsable(face) || face.hasFlag(CFaceO::NO_VERTEX_NORMAL))
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            if (takesFaceNormals(*face.v[corner]))
                face.v[corner]->normal += face.normal;
        }
    }
    for (CVertexO& vertex : mesh.vert) {
        if (takesFaceNormals(vertex))
            vertex.normal.normalize();
    }
    for (CFaceO& face : mesh.face) {
        if (isUsable(face))
            face.normal.normalize();
    }
}

} // namespace scene
} // namespace qel
