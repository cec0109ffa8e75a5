#include "module_scene/commands/addclippingplane.h"

#include "module_scene/clippingplane.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"

#include <QObject>

namespace qel {
namespace commands {
namespace scene {

const char* const AddClippingPlane::CommandName = "addclippingplane";

bool AddClippingPlane::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&AddClippingPlane::create);

main::Command* AddClippingPlane::create()
{
    return new AddClippingPlane;
}

AddClippingPlane::AddClippingPlane()
    : AddElementCommand(CommandName, QObject::tr("Adds a clipping plane"),
                        {10, QObject::tr("Add clipping plane"), "clippingplane.png", QKeySequence(Qt::Key_C)})
{
    enableCloning<AddClippingPlane>();
}

// A full table of plane numbers isn't reported: the entry stays and does nothing.
qel::scene::SceneElement* AddClippingPlane::createElement(qel::scene::Scene* scene)
{
    if (scene->findFreeClippingPlaneNumber() == -1)
        return nullptr;
    return new qel::scene::ClippingPlane;
}

} // namespace scene
} // namespace commands
} // namespace qel
