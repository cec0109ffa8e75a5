#include "module_scene/mesh/meshtopology.h"

#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshedgelist.h"

namespace qel {
namespace scene {

namespace {

void link(FaceVector& faces, const MeshEdgeList::Edge& from, const MeshEdgeList::Edge& to)
{
    FaceLinks& links = faces.faceFaceLinks()[from.facePlace()];
    links.face[from.edge()] = &faces[to.facePlace()];
    links.index[from.edge()] = static_cast<signed char>(to.edge());
}

} // namespace

void MeshTopology::buildFaceFace(CMeshO& mesh)
{
    if (!mesh.face.isFaceFaceEnabled())
        mesh.face.enableFaceFace();
    buildFaceFace(mesh, 0, mesh.vert.size());
}

void MeshTopology::buildFaceFace(CMeshO& mesh, std::size_t firstVertex, std::size_t endVertex)
{
    FaceVector& faces = mesh.face;
    const MeshEdgeList edges(mesh, firstVertex, endVertex);
    edges.forEachTwinGroup([&faces](const MeshEdgeList::Edge* group, std::size_t count) {
        for (std::size_t member = 0; member < count; ++member)
            link(faces, group[member], group[(member + 1) % count]);
    });
}

void MeshTopology::buildVertexFace(CMeshO& mesh)
{
    FaceVector& faces = mesh.face;
    if (!faces.isVertexFaceEnabled())
        faces.enableVertexFace();
    for (CVertexO& vertex : mesh.vert) {
        vertex.vfFace = nullptr;
        vertex.vfIndex = 0;
    }
    std::vector<FaceLinks>& links = faces.vertexFaceLinks();
    for (std::size_t place = 0; place < faces.size(); ++place) {
        CFaceO& face = faces[place];
        if (face.isDeleted() || !face.hasCorners())
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            CVertexO* vertex = face.v[corner];
            links[place].face[corner] = vertex->vfFace;
            links[place].index[corner] = static_cast<signed char>(vertex->vfIndex);
            vertex->vfFace = &face;
            vertex->vfIndex = corner;
        }
    }
}

} // namespace scene
} // namespace qel
