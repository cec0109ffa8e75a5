#pragma once

#include "kernel/util/zpointer.h"
#include "module_scene/mesh/cmesho.h"
#include "module_scene/meshmodel.h"
#include "module_scene/sceneelement.h"
#include "module_scene/scenevcgmodel.h"

#include <cstddef>
#include <map>
#include <vector>

namespace qel {
namespace scene {

// What the selection bodies share: the models they work on, and the faces around the
// vertices they take, as face places per model.
class SelectedFaceCollector
{
public:
    typedef std::map<util::ZPointer<SceneElement>, std::vector<unsigned int>> FaceMap;

    // The models among the element's descendants, depth-first.
    static SceneElement::ElementList modelsBelow(const SceneElement* element);

    // Every face around each live vertex of the model's mesh that takes(vertex) accepts,
    // walked through the vertex-face adjacency (nothing without it). A model with at least
    // one such face gets an entry: the places in ascending order.
    template <class Takes>
    static void collect(SceneVCGModel* model, Takes takes, FaceMap& faces)
    {
        const MeshModel* mesh = model->getMeshModel();
        if (!mesh || !mesh->cm.face.isVertexFaceEnabled())
            return;
        std::vector<bool> taken(mesh->cm.face.size(), false);
        bool any = false;
        for (const CVertexO& vertex : mesh->cm.vert) {
            if (vertex.isDeleted() || !takes(vertex))
                continue;
            any = markFacesAround(mesh->cm, vertex, taken) || any;
        }
        if (any)
            faces[util::ZPointer<SceneElement>(model)] = placesOf(taken);
    }

private:
    SelectedFaceCollector() = delete;

    static bool markFacesAround(const CMeshO& mesh, const CVertexO& vertex, std::vector<bool>& taken);
    static std::vector<unsigned int> placesOf(const std::vector<bool>& taken);
};

} // namespace scene
} // namespace qel
