#pragma once

#include "kernel/util/zpointer.h"
#include "kernel/util/worker.h"

#include <QObject>
#include <QPointer>
#include <set>

class QOpenGLFunctions;

namespace qel {
namespace gui {
class ScenePanel;
class SceneWindow;
class SharedContext;
} // namespace gui

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

// The process-wide owner of the global scene, the shared GL context and the open scene
// windows; it knows the active panel. Callers may be on any thread: windows are made and
// closed on the application thread through blocking workers.
class Viewer : public QObject
{
    Q_OBJECT

public:
    // Creates the singleton on the first call.
    static Viewer* getInstance();
    // Ends the global scene; the next getInstance makes a new Viewer with a new scene. Open
    // windows are not closed.
    ~Viewer() override;

    // A new window on the global scene, in the workspace; it becomes the active one.
    SceneWindow* createSceneWindow();
    // Closes every window; each leaves the set when it is destroyed.
    void cleanUpWindows();

    const QPointer<ScenePanel>& getActivePanel() const { return activePanel; }
    // Fires "SCENEPANEL_CHANGED" with the panel when it is another one.
    void setActivePanel(ScenePanel* panel);

    util::ZPointer<scene::Scene>& getGlobalScene() { return globalScene; }
    SharedContext* getGLContext() const { return sharedContext; }
    SharedContext* getSharedContext() const { return sharedContext; }
    QOpenGLFunctions* getGLFunctions();
    int getNumberOfSceneWindows() const { return static_cast<int>(windows.size()); }
    std::set<SceneWindow*>* getSceneWindows() { return &windows; }
    bool isFboAvailable() const;

private slots:
    void SceneWindowDestroyed(QObject* object);

private:
    class CreateWindowWorker : public util::Worker
    {
    public:
        explicit CreateWindowWorker(const util::ZPointer<scene::Scene>& scene);
        ~CreateWindowWorker() override;
        SceneWindow* result = nullptr;

    protected:
        void run() override;

    private:
        util::ZPointer<scene::Scene> scene;
    };

    class CleanWindowsWorker : public util::Worker
    {
    public:
        explicit CleanWindowsWorker(Viewer* viewer) : viewer(viewer) {}

    protected:
        void run() override;

    private:
        Viewer* viewer;
    };

    Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    void fireActivePanelChanged(ScenePanel* panel);

    static Viewer* mp_This;

    std::set<SceneWindow*> windows;
    SharedContext* sharedContext;
    QOpenGLFunctions* glFunctions = nullptr;
    QPointer<ScenePanel> activePanel;
    util::ZPointer<scene::Scene> globalScene;
};

} // namespace gui
} // namespace qel
