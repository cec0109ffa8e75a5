#include "module_scene/commands/origintranslate.h"

#include "kernel/main/overseer.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"

#include <QObject>

namespace qel {
namespace commands {
namespace scene {

const char* const OriginTranslate::CommandName = "origintranslate";

bool OriginTranslate::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&OriginTranslate::create);

main::Command* OriginTranslate::create()
{
    return new OriginTranslate;
}

OriginTranslate::OriginTranslate()
    : SceneCommand(
        new main::CommandDescriptor(CommandName, QObject::tr("Translates the local origin of an element")), nullptr)
{
    enableCloning<OriginTranslate>();
    auto* set = new main::ParameterSet(0, QObject::tr("Translate the origin of the active element"));
    const char* const names[3] = {"x", "y", "z"};
    const QString descriptions[3] = {
        QObject::tr("x part of the absolute origin position in the model coordinatesystem"),
        QObject::tr("y part of the absolute origin position in the model coordinatesystem"),
        QObject::tr("z part of the absolute origin position in the model coordinatesystem")};
    for (int i = 0; i < 3; ++i)
        set->addParameter(new main::Parameter<double>(names[i], descriptions[i]));
    addParameterSet(set);
    disableGUIDescriptors(getGUIDescriptors(), true);
}

OriginTranslate::~OriginTranslate() = default;

void OriginTranslate::execute()
{
    if (selectedID != 0)
        return;
    main::OutputConsole* console = main::Overseer::getInstance()->getOutputConsole();
    LocalParameter<double> x, y, z;
    if (!solveParameters(typeSolver, selectedParameterSet, {&x, &y, &z})) {
        console->appendText(QObject::tr("Parameter failure"));
        return;
    }
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    const double scaling = scene->getGlobalScalingFactor();
    const double measuring = scene->getMeasuring();
    if (!mp_Element)
        return;
    if (!mp_Element->isOriginChangeable()) {
        console->appendText(QObject::tr("Origin of the element %1 cannot changed!").arg(mp_Element->getName()));
        return;
    }
    qel::scene::SceneLocker locker(scene.get(), qel::scene::SceneLocker::LOCK_TRANSFORM);
    mp_Element->transformStart(true);
    qel::scene::SceneElement::Matrix4 origin = mp_Element->getOrigin();
    origin[12] = *x * scaling / measuring;
    origin[13] = *y * scaling / measuring;
    origin[14] = *z * scaling / measuring;
    mp_Element->setOrigin(origin);
    mp_Element->transformFinish(nullptr);
}

// Greys the entries only, like the transform commands: command strings still run.
void OriginTranslate::focusChanged()
{
    const bool usable = mp_Element && mp_Element->isOriginChangeable();
    disableGUIDescriptors(getGUIDescriptors(), !usable);
}

} // namespace scene
} // namespace commands
} // namespace qel
