#include "kernel/main/settingscommand.h"

#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"

namespace qel {
namespace main {

SettingsCommand::SettingsCommand(CommandDescriptor* descriptor, CommandGUIDescriptor* guiDescriptor)
    : Command(descriptor, guiDescriptor), fireSettingsChanged(true)
{
}

void SettingsCommand::settingsChanged()
{
    if (!fireSettingsChanged)
        return;
    static const unsigned long id = qel::events::EventHandler::getInstance()->addEvent("Global", "SETTINGS_CHANGED");
    Event event(id, nullptr, this);
    EventManager::getInstance()->fireEvent(event);
}

} // namespace main
} // namespace qel
