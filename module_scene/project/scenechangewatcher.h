#pragma once

#include "kernel/util/zobserver.h"

#include <QMutex>
#include <atomic>
#include <set>

namespace qel {
namespace main {
class Event;
}
namespace scene {

class Scene;
class SceneElement;

// Tells the project manager that the scene has changes to save: elements added, removed,
// reordered or reparented, picked points, and any change an element announces (moves,
// names, visibility, colours, face selections). The root, the selection node and internal
// elements don't count. While suppressed (a project being opened or emptied) nothing is
// told.
class SceneChangeWatcher : public util::ZObserver
{
public:
    // With a scene, only that scene's changes count; without, those of any scene.
    explicit SceneChangeWatcher(Scene* onlyScene = nullptr);
    ~SceneChangeWatcher() override;
    SceneChangeWatcher(const SceneChangeWatcher&) = delete;
    SceneChangeWatcher& operator=(const SceneChangeWatcher&) = delete;

    // Suppresses the watcher for its own lifetime.
    class Silence
    {
    public:
        explicit Silence(SceneChangeWatcher* watcher) : watcher(watcher) { ++watcher->suppressed; }
        ~Silence() { --watcher->suppressed; }
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;

    private:
        SceneChangeWatcher* watcher;
    };

    // An element announced a change.
    void update(void* data, void* source) override;

private:
    void elementAdded(const main::Event* event);
    void elementRemoved(const main::Event* event);
    void treeChanged(const main::Event* event);
    void pointsChanged(const main::Event* event);
    bool isWatchedScene(const void* source) const;
    bool isWatched(const void* element);
    void changed();

    Scene* onlyScene;
    std::atomic<int> suppressed{0};
    QMutex mutex;
    // Registered elements this observer is attached to; the keys only are used after removal.
    std::set<const void*> watched;
};

} // namespace scene
} // namespace qel
