#include "module_scene/mesh/meshborderflags.h"

#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshedgelist.h"

namespace qel {
namespace scene {

namespace {

const std::uint32_t ALL_BORDER_EDGES = CFaceO::BORDER_EDGE_0 | CFaceO::BORDER_EDGE_1 | CFaceO::BORDER_EDGE_2;

} // namespace

void MeshBorderFlags::fromFaceFace(CMeshO& mesh)
{
    FaceVector& faces = mesh.face;
    for (std::size_t place = 0; place < faces.size(); ++place) {
        CFaceO& face = faces[place];
        if (face.isDeleted())
            continue;
        const FaceLinks& links = faces.faceFaceLinks()[place];
        for (int edge = 0; edge < 3; ++edge) {
            if (links.face[edge] == &face)
                face.setFlag(CFaceO::borderFlag(edge));
            else
                face.clearFlag(CFaceO::borderFlag(edge));
        }
    }
    updateVertexFlags(mesh);
}

void MeshBorderFlags::fromEdgeList(CMeshO& mesh)
{
    FaceVector& faces = mesh.face;
    for (CFaceO& face : faces) {
        if (!face.isDeleted())
            face.clearFlag(ALL_BORDER_EDGES);
    }
    const MeshEdgeList edges(mesh);
    edges.forEachTwinGroup([&faces](const MeshEdgeList::Edge* group, std::size_t count) {
        if (count == 1)
            faces[group->facePlace()].setFlag(CFaceO::borderFlag(group->edge()));
    });
    updateVertexFlags(mesh);
}

void MeshBorderFlags::updateVertexFlags(CMeshO& mesh)
{
    for (CVertexO& vertex : mesh.vert)
        vertex.clearFlag(CVertexO::BORDER);
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted() || !face.hasCorners())
            continue;
        for (int edge = 0; edge < 3; ++edge) {
            if (face.isBorder(edge)) {
                face.v[edge]->setFlag(CVertexO::BORDER);
                face.v[(edge + 1) % 3]->setFlag(CVertexO::BORDER);
            }
        }
    }
}

} // namespace scene
} // namespace qel
