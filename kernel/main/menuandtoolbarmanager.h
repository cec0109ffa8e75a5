#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <map>
#include <vector>

class QAction;
class QMainWindow;
class QMenu;
class QToolBar;

namespace qel {
namespace main {

class Command;
class CommandGUIDescriptor;
class CommandProcessor;
class ContextMenuUpdater;
class ModuleManager;
class ParameterSet;

// Builds the main window's menus and toolbars, the named context menus and the list of
// settings pages from the GUI descriptors of the registered commands. Menus, toolbars
// and pages are ordered by the positions the modules give their names (unknown names
// last, by name), entries by the descriptors' positions.
class MenuAndToolbarManager : public QObject
{
    Q_OBJECT

public:
    // A place in a menu or toolbar; lower numbers stand further left or further up.
    class Position
    {
    public:
        Position(int position = 0) : position(position) {}
        int getPosition() const { return position; }
        bool operator<(const Position& other) const { return position < other.position; }
        bool operator==(const Position& other) const { return position == other.position; }

    private:
        int position;
    };

    // Nothing is owned but the menus and toolbars it makes.
    MenuAndToolbarManager(QMainWindow* mainWindow, CommandProcessor* processor, ModuleManager* modules);
    ~MenuAndToolbarManager() override;

    // Rebuilds everything from the commands registered now. Any thread; the work is done
    // on the application thread.
    void update();
    // Takes every entry out (before the commands go away).
    void clear();

    QMenu* getMenu(const QString& name) const;
    QToolBar* getToolBar(const QString& name) const;
    // The context menu of that name, made empty if nothing has been built for it yet.
    QMenu* getContextMenu(const QString& name);
    QList<QAction*> getContextMenuActions(const QString& name) const;
    // Menus and toolbars in their order on the main window.
    QStringList getMenuNames() const;
    QStringList getToolBarNames() const;
    QStringList getSettingsPages() const;
    // The entries of one place (flag and location), in their order.
    std::vector<CommandGUIDescriptor*> getEntries(int flag, const QString& location) const;

    // What an entry does when its action triggers: nothing (logged) for a disabled command,
    // else the descriptor's own function, the command's own window, a direct run of a
    // command without parameters, or the parameter dialog.
    void trigger(CommandGUIDescriptor* descriptor);

    // A position the host gives a place name of its own ("File", say), used when no
    // module names one.
    void setHostPosition(int flag, const QString& name, const Position& position);

    // Entries of the host's own that run no registered command (Quit, a submenu): built in
    // with the commands' entries. The caller keeps the descriptor and removes it before it
    // goes; the descriptor's GUI open function is what the entry does.
    void addHostEntry(CommandGUIDescriptor* descriptor);
    void removeHostEntry(CommandGUIDescriptor* descriptor);

    void addContextMenuUpdater(ContextMenuUpdater* updater);
    void removeContextMenuUpdater(ContextMenuUpdater* updater);

private:
    typedef std::map<QString, std::vector<CommandGUIDescriptor*>> Places;

    void rebuild();
    void removeAll();
    void collectEntries();
    int placePosition(int flag, const QString& name) const;
    QStringList orderedNames(int flag) const;
    void buildMenus();
    void buildToolBars();
    void buildContextMenus();
    void connectAction(CommandGUIDescriptor* descriptor);
    void fillMenu(QMenu* menu, const std::vector<CommandGUIDescriptor*>& entries);
    void refreshUpdaters();
    void runWithoutDialog(Command* command);
    void openParameterDialog(Command* command, const std::vector<ParameterSet*>& sets);

    QPointer<QMainWindow> mainWindow;
    CommandProcessor* processor;
    ModuleManager* modules;
    std::map<int, Places> entries;
    std::map<int, std::map<QString, int>> hostPositions;
    QMap<QString, QPointer<QMenu>> menus;
    QMap<QString, QPointer<QToolBar>> toolBars;
    QMap<QString, QMenu*> contextMenus;
    QStringList menuOrder;
    QStringList toolBarOrder;
    QList<ContextMenuUpdater*> updaters;
    std::vector<CommandGUIDescriptor*> hostEntries;
};

} // namespace main
} // namespace qel
