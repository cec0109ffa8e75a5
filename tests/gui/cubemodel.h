#pragma once

// A model element holding the cube [-1, 1]^3 with a flat normal on every face, complete and
// ready to draw.
#include "mesh/meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenevcgmodel.h"

namespace qel {
namespace test {

inline scene::SceneVCGModel* makeCubeModel(const QString& name, const QColor& color)
{
    auto* mesh = new scene::MeshModel;
    buildCubeSoup(mesh->cm);
    for (scene::CVertexO& vertex : mesh->cm.vert)
        vertex.coord = Point(vertex.coord.x() * 2.0 - 1.0, vertex.coord.y() * 2.0 - 1.0, vertex.coord.z() * 2.0 - 1.0);
    scene::MeshNormals::updateVertexAndFaceNormals(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    mesh->busy = false;
    auto* model = new scene::SceneVCGModel(mesh, name);
    model->setModelColor(color);
    return model;
}

} // namespace test
} // namespace qel
