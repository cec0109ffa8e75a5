#include "module_scene/project/scenechangewatcher.h"

#include "kernel/io/projectmanager.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"

#include <QMutexLocker>
#include <boost/bind/bind.hpp>

namespace qel {
namespace scene {

SceneChangeWatcher::SceneChangeWatcher(Scene* onlyScene) : onlyScene(onlyScene)
{
    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    auto listen = [this, events](unsigned long id, void (SceneChangeWatcher::*handler)(const main::Event*)) {
        events->registerEventFunction(id, new main::EventManager::EventFunction(boost::bind(handler, this, _1)), this);
    };
    listen(SCENE_ELEMENT_ADDED, &SceneChangeWatcher::elementAdded);
    listen(SCENE_ELEMENT_REMOVED, &SceneChangeWatcher::elementRemoved);
    listen(SCENE_ELEMENT_DELETED, &SceneChangeWatcher::elementRemoved);
    listen(SCENE_ELEMENT_CHILDS_REORDERED, &SceneChangeWatcher::treeChanged);
    listen(SCENE_ELEMENTS_REPARENTED, &SceneChangeWatcher::treeChanged);
    listen(POINTS_SELECTED, &SceneChangeWatcher::pointsChanged);
    listen(POINTS_DESELECTED, &SceneChangeWatcher::pointsChanged);
    listen(POINTS_REPLACED, &SceneChangeWatcher::pointsChanged);
}

// Elements that outlive the watcher must not keep calling it.
SceneChangeWatcher::~SceneChangeWatcher()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
    QMutexLocker locker(&mutex);
    for (const void* element : watched)
        static_cast<SceneElement*>(const_cast<void*>(element))->detachObserver(this);
}

void SceneChangeWatcher::update(void*, void*)
{
    changed();
}

void SceneChangeWatcher::elementAdded(const main::Event* event)
{
    if (!isWatchedScene(event->getSource()))
        return;
    auto* scene = static_cast<Scene*>(event->getSource());
    auto* element = static_cast<SceneElement*>(event->getData());
    if (!element || element == scene->getRootNode().get() || element == scene->getSelectionNode().get()
        || element->isInternal())
        return;
    {
        QMutexLocker locker(&mutex);
        watched.insert(element);
    }
    element->attachObserver(this);
    changed();
}

// Also on deletion, where the element is past its destructors: then its pointer is a key only.
void SceneChangeWatcher::elementRemoved(const main::Event* event)
{
    const void* element = event->getID() == SCENE_ELEMENT_DELETED ? event->getSource() : event->getData();
    {
        QMutexLocker locker(&mutex);
        if (watched.erase(element) == 0)
            return;
    }
    if (event->getID() == SCENE_ELEMENT_REMOVED) {
        static_cast<SceneElement*>(const_cast<void*>(element))->detachObserver(this);
        changed();
    }
}

// The source is the element whose children changed: a watched one, or a scene's root.
void SceneChangeWatcher::treeChanged(const main::Event* event)
{
    const void* source = event->getSource();
    if (!onlyScene || isWatched(source) || source == onlyScene->getRootNode().get())
        changed();
}

void SceneChangeWatcher::pointsChanged(const main::Event* event)
{
    if (isWatchedScene(event->getSource()))
        changed();
}

bool SceneChangeWatcher::isWatchedScene(const void* source) const
{
    return !onlyScene || source == onlyScene;
}

bool SceneChangeWatcher::isWatched(const void* element)
{
    QMutexLocker locker(&mutex);
    return watched.count(element) != 0;
}

void SceneChangeWatcher::changed()
{
    if (suppressed.load() == 0)
        io::ProjectManager::getInstance()->markModified();
}

} // namespace scene
} // namespace qel
