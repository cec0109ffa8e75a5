#include "module_scene/selectedfacecollector.h"

#include "module_scene/mesh/facelinks.h"

namespace qel {
namespace scene {

SceneElement::ElementList SelectedFaceCollector::modelsBelow(const SceneElement* element)
{
    return element->findAllChildsOfType(SceneVCGModel::TypeName, true);
}

bool SelectedFaceCollector::markFacesAround(const CMeshO& mesh, const CVertexO& vertex, std::vector<bool>& taken)
{
    bool any = false;
    const CFaceO* face = vertex.vfFace;
    int corner = vertex.vfIndex;
    while (face && corner >= 0 && corner < 3) {
        taken[static_cast<std::size_t>(face - mesh.face.data())] = true;
        any = true;
        const FaceLinks& links = mesh.face.vertexFaceLinks()[static_cast<std::size_t>(face - mesh.face.data())];
        face = links.face[corner];
        corner = links.index[corner];
    }
    return any;
}

std::vector<unsigned int> SelectedFaceCollector::placesOf(const std::vector<bool>& taken)
{
    std::size_t count = 0;
    for (bool isTaken : taken)
        count += isTaken ? 1 : 0;
    std::vector<unsigned int> places;
    places.reserve(count);
    for (std::size_t place = 0; place < taken.size(); ++place) {
        if (taken[place])
            places.push_back(static_cast<unsigned int>(place));
    }
    return places;
}

} // namespace scene
} // namespace qel
