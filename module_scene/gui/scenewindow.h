#pragma once

#include "kernel/util/zmemorymanaged.h"
#include "kernel/util/zpointer.h"

#include <QObject>
#include <QPointer>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace qel {
namespace scene {
class Scene;
}
namespace gui {

class ScenePanel;

// One scene panel in a window of the host's workspace. The workspace window owns the panel;
// this object lives as long as that window and is deleted after it.
class SceneWindow : public QObject, public util::ZMemoryManaged<SceneWindow>
{
    Q_OBJECT

public:
    // On the application thread: makes the panel, puts it into the workspace, shows it and
    // makes it the active panel.
    explicit SceneWindow(const util::ZPointer<scene::Scene>& scene);
    ~SceneWindow() override;

    // Closes the workspace window, which ends this object later.
    void close();

    ScenePanel* getPanel() const { return panel.data(); }
    QWidget* getWorkspaceWindow() const { return workspaceWindow.data(); }

    // Only with a live panel.
    virtual void saveTo(QXmlStreamWriter* writer);
    virtual void loadFrom(QXmlStreamReader* reader);

private slots:
    void activating();

private:
    QPointer<ScenePanel> panel;
    // Guarded: close may come between the window's end and this object's.
    QPointer<QWidget> workspaceWindow;
};

} // namespace gui
} // namespace qel
