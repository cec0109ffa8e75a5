#include "module_scene/commands/scenecommand.h"

#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"

#include <QAction>
#include <boost/bind/bind.hpp>

namespace qel {
namespace commands {
namespace scene {

SceneCommand::SceneCommand(main::CommandDescriptor* descriptor, main::CommandGUIDescriptor* guiDescriptor)
    : Command(descriptor, guiDescriptor), mp_Element(nullptr)
{
    registerFocusFunction();
}

// Working copies only run: the prototype follows the focus and keeps the actions up to date.
SceneCommand::SceneCommand(const SceneCommand& other) : Command(other), mp_Element(other.mp_Element)
{
}

SceneCommand::~SceneCommand()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

main::Command* SceneCommand::clone() const
{
    main::Command* copy = Command::clone();
    auto* sceneCopy = dynamic_cast<SceneCommand*>(copy);
    if (!sceneCopy) {
        log::Logger::log(1000, "module_scene/commands/scenecommand", 44, "qel::commands::scene::SceneCommand::clone",
                         nullptr, "bad things!");
        delete copy;
        return nullptr;
    }
    sceneCopy->mp_Element = mp_Element;
    return sceneCopy;
}

void SceneCommand::setCheckable(bool checkable)
{
    for (main::CommandGUIDescriptor* descriptor : getGUIDescriptors())
        descriptor->getQAction()->setCheckable(checkable);
}

void SceneCommand::setChecked(bool checked)
{
    for (main::CommandGUIDescriptor* descriptor : getGUIDescriptors()) {
        QAction* action = descriptor->getQAction();
        if (!action->isCheckable()) {
            log::Logger::log(2000, "module_scene/commands/scenecommand", 68,
                             "qel::commands::scene::SceneCommand::setChecked", nullptr, "QAction is not checkable!");
            continue;
        }
        action->setChecked(checked);
    }
}

void SceneCommand::registerFocusFunction()
{
    using namespace boost::placeholders;
    main::EventManager::getInstance()->registerEventFunction(
        qel::scene::SCENE_ELEMENT_FOCUSED,
        new main::EventManager::EventFunction(boost::bind(&SceneCommand::sceneElementFocused, this, _1)), this);
}

void SceneCommand::followTransformLock()
{
    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    events->registerEventFunction(
        qel::scene::SCENE_TRANSFORM_LOCKED,
        new main::EventManager::EventFunction(boost::bind(&SceneCommand::transformLocked, this, _1)), this);
    events->registerEventFunction(
        qel::scene::SCENE_TRANSFORM_UNLOCKED,
        new main::EventManager::EventFunction(boost::bind(&SceneCommand::transformUnlocked, this, _1)), this);
}

void SceneCommand::enableFocusedEntry()
{
    const std::vector<main::CommandGUIDescriptor*> descriptors = getGUIDescriptors();
    if (descriptors.empty())
        return;
    const bool usable = mp_Element && !m_TransformLocked && mp_Element->isTransformable();
    descriptors.back()->enableQAction(usable);
}

void SceneCommand::transformLocked(const main::Event*)
{
    disableGUIDescriptors(getGUIDescriptors(), true);
    m_TransformLocked = true;
}

void SceneCommand::transformUnlocked(const main::Event*)
{
    disableGUIDescriptors(getGUIDescriptors(), false);
    m_TransformLocked = false;
    focusChanged();
}

// The event names the element in its data (null when the focus was cleared); its source
// is the scene.
void SceneCommand::sceneElementFocused(const main::Event* event)
{
    auto* element = static_cast<qel::scene::SceneElement*>(event->getData());
    if (element == mp_Element)
        return;
    mp_Element = element;
    focusChanged();
}

} // namespace scene
} // namespace commands
} // namespace qel
