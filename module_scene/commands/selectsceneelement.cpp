#include "module_scene/commands/selectsceneelement.h"

#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"

#include <QObject>
#include <vector>

namespace qel {
namespace commands {
namespace scene {

namespace {

const char* const LogFile = "module_scene/commands/selectsceneelement";
const char* const ExecuteFunction = "qel::commands::scene::SelectSceneElement::execute";

void fireSelection(qel::scene::Scene::ElementList& selection)
{
    main::Event event(qel::scene::SCENE_ELEMENTS_SELECTION, &selection, nullptr, false);
    main::EventManager::getInstance()->fireEvent(event);
}

} // namespace

const char* const SelectSceneElement::CommandName = "selectsceneelements";

bool SelectSceneElement::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&SelectSceneElement::create);

main::Command* SelectSceneElement::create()
{
    return new SelectSceneElement;
}

SelectSceneElement::SelectSceneElement()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Selects the scene elements to manipulate")))
{
    enableCloning<SelectSceneElement>();
    auto* select = new main::ParameterSet(SET_SELECT, QObject::tr("Select mutiple scene elements"));
    select->addParameter(new main::Parameter<std::vector<QString>>(
        "names", QObject::tr("The names of the scene elements to select")));
    addParameterSet(select);
    addParameterSet(new main::ParameterSet(SET_DESELECT_ALL, QObject::tr("Deselect all scene elements")));
}

SelectSceneElement::~SelectSceneElement() = default;

// Names that are missing are reported and left out; the rest is selected, duplicates too.
void SelectSceneElement::execute()
{
    qel::scene::Scene::ElementList selection;
    if (selectedID != SET_SELECT) {
        fireSelection(selection);
        return;
    }
    LocalParameter<std::vector<QString>> names;
    if (!solveParameters(typeSolver, selectedParameterSet, {&names})) {
        log::Logger::log(2000, LogFile, 71, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    for (const QString& name : *names) {
        const qel::scene::SceneElement::Pointer element = scene->getSceneElement(name);
        if (element.isNull()) {
            log::Logger::log(2000, LogFile, 79, ExecuteFunction, nullptr,
                             QObject::tr("Sceneelement '%1' to select does not exists").arg(name));
            continue;
        }
        selection.push_back(element);
    }
    fireSelection(selection);
}

} // namespace scene
} // namespace commands
} // namespace qel
