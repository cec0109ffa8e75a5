#include "kernel/main/historystepcommand.h"

#include "kernel/events/eventhandler.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/eventmanager.h"

namespace qel {
namespace main {

HistoryStepCommand::HistoryStepCommand(CommandProcessor* processor, const Step& step)
    : Command(new CommandDescriptor(step.name, step.description),
              new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, QObject::tr("Edit"), step.menuPosition,
                                       step.menuText, step.toolTip, nullptr)),
      processor(processor), step(step)
{
    getGUIDescriptors().front()->setShortcut(step.shortcut);
}

HistoryStepCommand::HistoryStepCommand(const HistoryStepCommand& other)
    : Command(other), processor(other.processor), step(other.step)
{
}

HistoryStepCommand::~HistoryStepCommand()
{
    EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void HistoryStepCommand::execute()
{
    if (!canStep())
        processor->reportMessage(step.nothingToDo, 2000);
    else if (!takeStep())
        processor->reportMessage(step.failed);
}

void HistoryStepCommand::followAvailability()
{
    qel::events::EventHandler* events = qel::events::EventHandler::getInstance();
    EventManager* manager = EventManager::getInstance();
    manager->registerEventFunction(events->addEvent("Global", step.availableEvent),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(true); }),
                                   this);
    manager->registerEventFunction(events->addEvent("Global", step.unavailableEvent),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(false); }),
                                   this);
    availabilityChanged(canStep());
}

void HistoryStepCommand::availabilityChanged(bool available)
{
    disableGUIDescriptors(getGUIDescriptors(), !available);
}

} // namespace main
} // namespace qel
