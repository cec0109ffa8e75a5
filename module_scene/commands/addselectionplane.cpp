#include "module_scene/commands/addselectionplane.h"

#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/sceneselectionplane.h"

#include <QObject>

namespace qel {
namespace commands {
namespace scene {

const char* const AddSelectionPlane::CommandName = "addselectionplane";

bool AddSelectionPlane::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&AddSelectionPlane::create);

main::Command* AddSelectionPlane::create()
{
    return new AddSelectionPlane;
}

AddSelectionPlane::AddSelectionPlane()
    : AddElementCommand(CommandName, QObject::tr("Add a Selection-Plane"),
                        {18, QObject::tr("Add selection plane"), "plane.png",
                         QKeySequence(Qt::CTRL | Qt::Key_N, Qt::CTRL | Qt::Key_P)})
{
    enableCloning<AddSelectionPlane>();
}

qel::scene::SceneElement* AddSelectionPlane::createElement(qel::scene::Scene*)
{
    return new qel::scene::SceneSelectionPlane("SelectionPlane");
}

void AddSelectionPlane::placeElement(qel::scene::Scene* scene, qel::scene::SceneElement* element)
{
    util::ZPointer<qel::scene::SceneElement> model = scene->getFirstSceneElementByType("SceneVCGModel");
    if (model)
        static_cast<qel::scene::SceneSelectionPlane*>(element)->setPlaneBase(model->getCenter());
}

} // namespace scene
} // namespace commands
} // namespace qel
