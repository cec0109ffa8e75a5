#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

// A command that changes an application setting. After a change it announces
// "SETTINGS_CHANGED" ("Global") unless the event is switched off, which the settings
// dialog does while it applies many settings at once.
class SettingsCommand : public Command
{
public:
    SettingsCommand(CommandDescriptor* descriptor, CommandGUIDescriptor* guiDescriptor = nullptr);
    SettingsCommand(const SettingsCommand& other) = default;
    ~SettingsCommand() override = default;

    bool isSettingsChangedEventEnabled() const { return fireSettingsChanged; }
    void setSettingsChangedEventEnabled(bool enable) { fireSettingsChanged = enable; }

protected:
    // Fires "SETTINGS_CHANGED" when the event is enabled.
    void settingsChanged();

private:
    bool fireSettingsChanged;
};

} // namespace main
} // namespace qel
