#include "module_scene/gui/viewer.h"

#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/scenewindow.h"
#include "module_scene/gui/sharedcontext.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QOpenGLContext>
#include <QThread>

namespace qel {
namespace gui {

namespace {

QMutex& creationMutex()
{
    static QMutex mutex;
    return mutex;
}

} // namespace

Viewer* Viewer::mp_This = nullptr;

Viewer* Viewer::getInstance()
{
    QMutexLocker locker(&creationMutex());
    if (!mp_This)
        mp_This = new Viewer;
    return mp_This;
}

// Callers may be on any thread; the Qt objects that join later live on the application thread.
Viewer::Viewer() : sharedContext(new SharedContext)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (application && thread() != application->thread()) {
        moveToThread(application->thread());
        sharedContext->moveToThread(application->thread());
    }
    globalScene = new scene::Scene;
}

// The scene holds a reference to itself through its observer: it ends here, not when the
// last pointer is dropped. Its models give their GL data back through this viewer's context
// while it ends, so the viewer stays the instance until then, and no lock is held that
// getInstance would need.
Viewer::~Viewer()
{
    if (!globalScene.isNull())
        globalScene->shutDown();
    globalScene = nullptr;
    {
        QMutexLocker locker(&creationMutex());
        if (mp_This == this)
            mp_This = nullptr;
    }
    delete sharedContext;
    sharedContext = nullptr;
    glFunctions = nullptr;
    activePanel = nullptr;
    windows.clear();
}

SceneWindow* Viewer::createSceneWindow()
{
    auto* worker = new CreateWindowWorker(globalScene);
    worker->setWait(true);
    worker->setDontDeleteMySelf(true);
    main::Overseer::getInstance()->transmitWorker(worker);
    worker->wait();
    SceneWindow* window = worker->result;
    delete worker;
    if (!window)
        return nullptr;
    windows.insert(window);
    connect(window, SIGNAL(destroyed(QObject*)), this, SLOT(SceneWindowDestroyed(QObject*)));
    return window;
}

void Viewer::cleanUpWindows()
{
    auto* worker = new CleanWindowsWorker(this);
    worker->setWait(true);
    main::Overseer::getInstance()->transmitWorker(worker);
    worker->wait();
}

void Viewer::setActivePanel(ScenePanel* panel)
{
    if (activePanel.data() == panel)
        return;
    activePanel = panel;
    fireActivePanelChanged(panel);
}

// Only the loss of the active panel is news; closing another window tells nobody.
void Viewer::SceneWindowDestroyed(QObject* object)
{
    for (auto window = windows.begin(); window != windows.end();) {
        if (static_cast<QObject*>(*window) == object)
            window = windows.erase(window);
        else
            ++window;
    }
    if (activePanel.isNull())
        fireActivePanelChanged(nullptr);
}

void Viewer::fireActivePanelChanged(ScenePanel* panel)
{
    main::Event event(scene::SCENEPANEL_CHANGED, panel, this, false);
    main::EventManager::getInstance()->fireEvent(event);
}

bool Viewer::isFboAvailable() const
{
    return sharedContext->hasFBO();
}

Viewer::CreateWindowWorker::CreateWindowWorker(const util::ZPointer<scene::Scene>& scene) : scene(scene)
{
}

Viewer::CreateWindowWorker::~CreateWindowWorker() = default;

void Viewer::CreateWindowWorker::run()
{
    result = new SceneWindow(scene);
}

// Closing destroys the window later: the set is walked on a copy.
void Viewer::CleanWindowsWorker::run()
{
    const std::set<SceneWindow*> windows = *viewer->getSceneWindows();
    for (SceneWindow* window : windows)
        window->close();
}

QOpenGLFunctions* Viewer::getGLFunctions()
{
    if (!glFunctions && sharedContext->hasContext())
        glFunctions = sharedContext->glContext()->functions();
    return glFunctions;
}

} // namespace gui

namespace scene {

util::ZPointer<Scene> _GlobalScene()
{
    return gui::Viewer::getInstance()->getGlobalScene();
}

gui::SharedContext* _GlobalContext()
{
    return gui::Viewer::getInstance()->getSharedContext();
}

QOpenGLFunctions* _GlobalGLFunctions()
{
    return gui::Viewer::getInstance()->getGLFunctions();
}

} // namespace scene
} // namespace qel
