#include "module_scene/commands/translate.h"

#include "kernel/log/logger.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/sceneevents.h"

#include <QIcon>
#include <QObject>

namespace qel {
namespace commands {
namespace scene {

namespace {

const char* const LogFile = "module_scene/commands/translate";
const char* const ExecuteFunction = "qel::commands::scene::Translate::execute";

void addCoordinates(main::ParameterSet* set)
{
    const char* const names[3] = {"x", "y", "z"};
    const QString descriptions[3] = {QObject::tr("The x coordinate"), QObject::tr("The y coordinate"),
                                     QObject::tr("The z coordinate")};
    for (int i = 0; i < 3; ++i) {
        auto* coordinate = new main::Parameter<double>(names[i], descriptions[i]);
        coordinate->setDefaultParameterForDefaultGUI("0");
        set->addParameter(coordinate);
    }
    set->addParameter(new main::Parameter<bool>("absolute", QObject::tr("An absolute or relative translation")));
}

} // namespace

const char* const Translate::CommandName = "translate";

bool Translate::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&Translate::create);

main::Command* Translate::create()
{
    return new Translate;
}

QString Translate::buildCommandString(const QString& name, double x, double y, double z, bool absolute)
{
    return QString("%1(%2,%3,%4,%5,%6)")
        .arg(CommandName, name)
        .arg(x)
        .arg(y)
        .arg(z)
        .arg(static_cast<int>(absolute));
}

Translate::Translate()
    : SceneCommand(new main::CommandDescriptor(CommandName,
                                               QObject::tr("Translates a scene element to the given coordinates")),
                   nullptr)
{
    enableCloning<Translate>();
    auto* named = new main::ParameterSet(0, QObject::tr("Translate a scene element"));
    named->addParameter(
        new main::Parameter<QString>("name", QObject::tr("The name of the scene element to translate")));
    addCoordinates(named);
    addParameterSet(named);
    auto* focused = new main::ParameterSet(1, QObject::tr("Translate the active scene element"));
    addCoordinates(focused);
    addParameterSet(focused);

    auto* treeEntry = new main::CommandGUIDescriptor(main::CommandGUIDescriptor::CONTEXTMENU, "scenetree", 60,
                                                     QObject::tr("Translate element"),
                                                     QObject::tr("Translate element"),
                                                     new QIcon(":/module_scene/image/translate.png"));
    treeEntry->useOnly({*focused});
    addGUIDescriptor(treeEntry);

    followTransformLock();
}

Translate::~Translate() = default;

void Translate::execute()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    LocalParameter<QString> name;
    LocalParameter<double> x, y, z;
    LocalParameter<bool> absolute;
    qel::scene::SceneElement* element = nullptr;
    if (selectedID == 0) {
        if (!selectedParameterSet || selectedParameterSet->size() == 0)
            return;
        if (!solveParameters(typeSolver, selectedParameterSet, {&name, &x, &y, &z, &absolute})) {
            log::Logger::log(4000, LogFile, 88, ExecuteFunction, nullptr, "Parameter failure");
            return;
        }
        element = scene->getSceneElement(*name).get();
    } else if (selectedID == 1 && solveParameters(typeSolver, selectedParameterSet, {&x, &y, &z, &absolute})) {
        element = scene->getFocusedNode().get();
    } else {
        log::Logger::log(4000, LogFile, 98, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    if (!element) {
        log::Logger::log(4000, LogFile, 103, ExecuteFunction, nullptr, "No selected element");
        return;
    }
    if (!element->isTransformable()) {
        log::Logger::log(4000, LogFile, 107, ExecuteFunction, nullptr, "Element '%s' is not transformable",
                         qPrintable(element->getName()));
        return;
    }

    qel::scene::SceneLocker locker(scene.get(), qel::scene::SceneLocker::LOCK_TRANSFORM);
    const double scaling = scene->getGlobalScalingFactor();
    const double measuring = scene->getMeasuring();
    double target[3] = {*x * scaling / measuring, *y * scaling / measuring, *z * scaling / measuring};
    element->transformStart(true);
    if (!*absolute) {
        for (int i = 0; i < 3; ++i)
            target[i] += element->getTransformMatrix()[12 + i];
    }
    element->translate(target[0], target[1], target[2]);
    element->transformFinish(nullptr);
}

// Only the scene tree's entry follows the focus.
void Translate::focusChanged()
{
    enableFocusedEntry();
}

} // namespace scene
} // namespace commands
} // namespace qel
