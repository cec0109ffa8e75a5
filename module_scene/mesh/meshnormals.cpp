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

// One pass over the faces: each raw normal goes to the corners before the face's own copy
// is normalised. The sums come out as with separate passes: same faces, same order.
void MeshNormals::updateVertexAndFaceNormals(CMeshO& mesh)
{
    for (CVertexO& vertex : mesh.vert) {
        if (takesFaceNormals(vertex))
            vertex.normal = CVertexO::Point();
    }
    for (CFaceO& face : mesh.face) {
        if (!isUsable(face))
            continue;
        face.normal = rawNormal(face);
        if (!face.hasFlag(CFaceO::NO_VERTEX_NORMAL)) {
            for (int corner = 0; corner < 3; ++corner) {
                if (takesFaceNormals(*face.v[corner]))
                    face.v[corner]->normal += face.normal;
            }
        }
        face.normal.normalize();
    }
    for (CVertexO& vertex : mesh.vert) {
        if (takesFaceNormals(vertex))
            vertex.normal.normalize();
    }
}

} // namespace scene
} // namespace qel
