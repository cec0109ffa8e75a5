#include "module_scene/commands/addsphere.h"

#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenesphere.h"

#include <QObject>
#include <cmath>

namespace qel {
namespace commands {
namespace scene {

const char* const AddSphere::CommandName = "addsphere";

bool AddSphere::m_Registered = qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&AddSphere::create);

main::Command* AddSphere::create()
{
    return new AddSphere;
}

AddSphere::AddSphere()
    : AddElementCommand(CommandName, QObject::tr("Add a Sphere"),
                        {17, QObject::tr("Add selection sphere"), "spherebox.png", QKeySequence(Qt::Key_S)})
{
    enableCloning<AddSphere>();
}

qel::scene::SceneElement* AddSphere::createElement(qel::scene::Scene*)
{
    return new qel::scene::SceneSphere;
}

// Half the model's diagonal and a little more, so that the whole model is inside; the
// handle stands at that distance on the x axis.
void AddSphere::placeElement(qel::scene::Scene* scene, qel::scene::SceneElement* element)
{
    auto* sphere = static_cast<qel::scene::SceneSphere*>(element);
    util::ZPointer<qel::scene::SceneElement> model = scene->getFirstSceneElementByType("SceneVCGModel");
    double radius = 50.0;
    if (model) {
        const auto& size = model->getBoundingBox(true).size;
        radius = std::sqrt(size.x() * size.x() + size.y() * size.y() + size.z() * size.z()) * 0.5 + 0.01;
    }
    qel::scene::SceneElement::Matrix4 handle = qel::scene::SceneElement::Matrix4::identity();
    handle[12] = radius;
    sphere->getDragger()->setTransformMatrix(handle);
    if (model) {
        const auto& position = model->getTransformMatrix();
        sphere->translate(position[12], position[13], position[14]);
    }
}

} // namespace scene
} // namespace commands
} // namespace qel
