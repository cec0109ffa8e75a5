#pragma once

#include "kernel/main/parameterset.h"

#include <QIcon>
#include <QKeySequence>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QString>
#include <boost/function.hpp>
#include <vector>

class QAction;

namespace qel {
namespace main {

class Command;

// Where a command appears on the GUI: a menu entry, a toolbar button, a context menu
// entry, a settings page or one extra place. The host wires the action's trigger.
// Every setter may be called from any thread; the action is only touched on its own.
class CommandGUIDescriptor : public QObject
{
    Q_OBJECT
public:
    enum GUIFLAG { MAINMENU = 1, TOOLBAR = 2, CONTEXTMENU = 4, SETTINGS = 8, EXTRA = 16 };
    typedef boost::function<void(QAction*, CommandGUIDescriptor*)> GUIOpenFunction;

    // Takes over the icon (may be null).
    CommandGUIDescriptor(GUIFLAG flag, const QString& location, int position, const QString& nameOnGUI,
                         const QString& toolTip, QIcon* icon);
    ~CommandGUIDescriptor() override;

    GUIFLAG getFlag() const { return flag; }
    const QString& getLocation() const { return location; }
    int getPosition() const { return position; }
    const QString& getNameOnGUI() const { return nameOnGUI; }
    const QString& getToolTip() const { return toolTip; }
    QIcon* getIcon() const { return icon; }

    void setShortcut(const QKeySequence& shortcut);
    QKeySequence getShortcut() const;

    // Restricts this entry to the given sets (compared by id); empty means all sets.
    void useOnly(const std::vector<ParameterSet>& sets);
    std::vector<ParameterSet> getUsedSets() const;

    // Replaces the default parameter dialog when the action triggers.
    void setGUIOpenFunction(const GUIOpenFunction& function);
    GUIOpenFunction getGUIOpenFunction() const;

    // Created on first use, on the application thread; owned by the descriptor.
    QAction* getQAction();
    void enableQAction(bool enable);
    bool isQActionEnabled() const;

    // The prototype command this entry runs.
    void setCommand(Command* command);
    Command* getCommand() const;

private:
    QAction* createQAction();
    void applyToAction(const boost::function<void(QAction*)>& change);

    const GUIFLAG flag;
    const QString location;
    const int position;
    const QString nameOnGUI;
    const QString toolTip;
    QIcon* const icon;

    mutable QMutex mutex;
    QKeySequence shortcut;
    std::vector<ParameterSet> usedSets;
    GUIOpenFunction openFunction;
    bool actionEnabled;
    Command* command;
    QPointer<QAction> action;
};

} // namespace main
} // namespace qel
