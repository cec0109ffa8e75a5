#pragma once

#include "kernel/util/zpointer.h"

#include <QObject>

namespace qel {
namespace scene {
class Scene;

// The global scene; creates the Viewer on first use, from any thread.
util::ZPointer<Scene> _GlobalScene();
} // namespace scene

namespace gui {

// The process-wide owner of the global scene. The shared GL context, the scene windows and
// the active panel join it with the views.
class Viewer : public QObject
{
    Q_OBJECT

public:
    // Creates the singleton on the first call.
    static Viewer* getInstance();
    // Ends the global scene; the next getInstance makes a new Viewer with a new scene.
    ~Viewer() override;

    util::ZPointer<scene::Scene>& getGlobalScene() { return globalScene; }

private:
    Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    static Viewer* mp_This;

    util::ZPointer<scene::Scene> globalScene;
};

} // namespace gui
} // namespace qel
