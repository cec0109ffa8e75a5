#include "module_scene/gui/viewer.h"

#include "module_scene/scene.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
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
Viewer::Viewer()
{
    QCoreApplication* application = QCoreApplication::instance();
    if (application && thread() != application->thread())
        moveToThread(application->thread());
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
}

} // namespace gui

namespace scene {

util::ZPointer<Scene> _GlobalScene()
{
    return gui::Viewer::getInstance()->getGlobalScene();
}

} // namespace scene
} // namespace qel
