#pragma once

#include "kernel/util/zpointer.h"

#include <QObject>

class QOpenGLFunctions;

namespace qel {
namespace gui {
class SharedContext;
}

namespace scene {
class Scene;

// The global scene; creates the Viewer on first use, from any thread.
util::ZPointer<Scene> _GlobalScene();
// The shared GL context of the module (creates the Viewer on first use).
gui::SharedContext* _GlobalContext();
// The GL functions of the shared context, fetched once; only after the first GL widget was
// initialised.
QOpenGLFunctions* _GlobalGLFunctions();
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
    SharedContext* getSharedContext() const { return sharedContext; }
    QOpenGLFunctions* getGLFunctions();

private:
    Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    static Viewer* mp_This;

    util::ZPointer<scene::Scene> globalScene;
    SharedContext* sharedContext;
    QOpenGLFunctions* glFunctions = nullptr;
};

} // namespace gui
} // namespace qel
