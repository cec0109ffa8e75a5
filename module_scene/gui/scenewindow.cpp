#include "module_scene/gui/scenewindow.h"

#include "kernel/main/overseer.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"

#include <QMdiSubWindow>

namespace qel {
namespace gui {

SceneWindow::SceneWindow(const util::ZPointer<scene::Scene>& scene)
    : panel(new ScenePanel(scene, nullptr))
{
    const QString title = tr("Scene Window");
    QMdiSubWindow* window = main::Overseer::getInstance()->getWorkspaceWindow(title, panel.data());
    workspaceWindow = window;
    connect(window, SIGNAL(aboutToActivate()), this, SLOT(activating()));
    window->resize(640, 480);
    window->show();
    Viewer::getInstance()->setActivePanel(panel.data());
    connect(window, SIGNAL(destroyed(QObject*)), this, SLOT(deleteLater()));
}

SceneWindow::~SceneWindow() = default;

void SceneWindow::close()
{
    if (workspaceWindow)
        workspaceWindow->close();
}

void SceneWindow::saveTo(QXmlStreamWriter* writer)
{
    panel->saveTo(writer);
}

void SceneWindow::loadFrom(QXmlStreamReader* reader)
{
    panel->loadFrom(reader);
}

void SceneWindow::activating()
{
    Viewer::getInstance()->setActivePanel(panel.data());
}

} // namespace gui
} // namespace qel
