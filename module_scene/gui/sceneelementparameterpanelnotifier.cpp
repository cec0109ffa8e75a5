#include "module_scene/gui/sceneelementparameterpanelnotifier.h"

#include "kernel/main/eventmanager.h"
#include "module_scene/gui/sceneelementparameterpanelfactory.h"
#include "module_scene/sceneevents.h"

#include <boost/bind/bind.hpp>

namespace qel {
namespace main {

SceneElementParameterPanelNotifier::SceneElementParameterPanelNotifier(SceneElementParameterPanelFactory* factory)
    : factory(factory)
{
    using namespace boost::placeholders;
    EventManager* events = EventManager::getInstance();
    for (unsigned long id : {scene::SCENE_ELEMENT_ADDED, scene::SCENE_ELEMENT_REMOVED, scene::SCENE_ELEMENT_RENAMED})
        events->registerEventFunction(
            id, new EventManager::EventFunction(boost::bind(&SceneElementParameterPanelNotifier::elementsChanged, this, _1)),
            this);
}

SceneElementParameterPanelNotifier::~SceneElementParameterPanelNotifier()
{
    EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void SceneElementParameterPanelNotifier::notify()
{
    factory->updateList();
    Notifier::update();
}

void SceneElementParameterPanelNotifier::elementsChanged(const Event*)
{
    notify();
}

} // namespace main
} // namespace qel
