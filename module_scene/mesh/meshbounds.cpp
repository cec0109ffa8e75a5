#include "module_scene/mesh/meshbounds.h"

#include "module_scene/mesh/cmesho.h"

namespace qel {
namespace scene {

void MeshBounds::update(CMeshO& mesh)
{
    mesh.bbox.setEmpty();
    for (const CVertexO& vertex : mesh.vert) {
        if (!vertex.isDeleted())
            mesh.bbox.add(vertex.coord);
    }
}

} // namespace scene
} // namespace qel
