#include "module_scene/gui/viewer.h"

#include "module_scene/gui/sharedcontext.h"
#include "module_scene/scene.h"

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
// last pointer is dropped.
Viewer::~Viewer()
{
    QMutexLocker locker(&creationMutex());
    if (mp_This == this)
        mp_This = nullptr;
    if (!globalScene.isNull())
        globalScene->shutDown();
    globalScene = nullptr;
    delete sharedContext;
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
