#pragma once

#include "kernel/main/command.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <map>
#include <memory>

class QAction;
class QActionGroup;

namespace qel {
namespace main {
class ComboBoxParameterPanelFactory;
}
namespace commands {
namespace scene {

// setselectionmode(mode): what a click in a scene view picks: 0 nothing, 1 models, 2 faces,
// 3 points, 4 nearest vertices. Its five checkable actions form one exclusive group, which
// other panels may join with their own picking actions.
class SetSelectionMode : public main::Command
{
public:
    enum Mode { MODE_NONE = 0, MODE_ELEMENTS = 1, MODE_FACES = 2, MODE_POINTS = 3, MODE_NEAREST_VERTEX = 4 };

    static const char* const CommandName;

    static main::Command* create();
    // Puts the action into the group of the registered command, now or once it is made.
    static void registerActionForGroup(QAction* action);

    SetSelectionMode();
    SetSelectionMode(const SetSelectionMode& other);
    ~SetSelectionMode() override;

    void execute() override;

    // The open functions of the five actions: each runs setselectionmode(n).
    void setSelectNone(QAction* action, main::CommandGUIDescriptor* descriptor);
    void setSelectElements(QAction* action, main::CommandGUIDescriptor* descriptor);
    void setSelectFaces(QAction* action, main::CommandGUIDescriptor* descriptor);
    void setSelectPoints(QAction* action, main::CommandGUIDescriptor* descriptor);
    void setSelectPointsFree(QAction* action, main::CommandGUIDescriptor* descriptor);

    QActionGroup* getActionGroup() const { return m_ActionGroup; }

private:
    // The scene's identifiers of the four modes, 0 until registered; shared with the
    // working copies, so that each mode is registered once.
    struct SceneModes
    {
        unsigned int elements = 0;
        unsigned int faces = 0;
        unsigned int points = 0;
        unsigned int pointsFree = 0;
    };

    void addEntry(int position, const QString& text, const char* icon, int key,
                  void (SetSelectionMode::*open)(QAction*, main::CommandGUIDescriptor*));
    void runMode(Mode mode);
    void registerSceneModes();
    unsigned int sceneModeOf(int mode) const;

    std::map<QString, int> m_Modes;
    std::shared_ptr<main::ComboBoxParameterPanelFactory> m_PanelFactory;
    std::shared_ptr<SceneModes> m_SceneModes;
    // The prototype's; working copies have none.
    QPointer<QActionGroup> m_ActionGroup;

    static QList<QAction*> m_RegisteredActions;
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
