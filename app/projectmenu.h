#pragma once

#include "kernel/io/recentprojects.h"

#include <QKeySequence>
#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

class QMainWindow;
class QMenu;

namespace qel {
namespace main {
class CommandGUIDescriptor;
class MenuAndToolbarManager;
}
}

// The project entries of the main window's File menu (New, Open..., Open Recent, Save,
// Save As..., Quit), the window title with the project's name and its unsaved mark, and
// the question before unsaved changes are dropped. Every entry sends a command string, so
// that it is recorded like a typed command. Only the window asks: scripts never do.
class ProjectMenu : public QObject
{
    Q_OBJECT
public:
    ProjectMenu(QMainWindow* window, qel::main::MenuAndToolbarManager* menus);
    ~ProjectMenu() override;

protected:
    // Closing the window asks first.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    qel::main::CommandGUIDescriptor* addEntry(const QString& text, int position, const QKeySequence& shortcut,
                                              const std::function<void()>& action);
    void newProject();
    void openProject();
    void openRecent(const QString& file);
    bool save();
    bool saveAs();
    // False when the user keeps the unsaved changes.
    bool mayDropChanges();
    QString askForFile(bool saving);
    bool run(const QString& command);
    void updateTitle();
    void updateRecentMenu();
    void rememberFile(const QString& file);

    QPointer<QMainWindow> window;
    QPointer<qel::main::MenuAndToolbarManager> menus;
    std::vector<std::unique_ptr<qel::main::CommandGUIDescriptor>> entries;
    std::unique_ptr<QMenu> recentMenu;
    qel::io::RecentProjects recent;
};
