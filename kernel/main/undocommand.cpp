#include "kernel/main/undocommand.h"

#include "kernel/events/eventhandler.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const UndoCommand::CommandName = "undo";

UndoCommand::UndoCommand(CommandProcessor* processor)
    : Command(new CommandDescriptor(CommandName, QObject::tr("Undoes the last change")),
              new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, QObject::tr("Edit"), 10, QObject::tr("Undo"),
                                       QObject::tr("Undo the last change"), nullptr)),
      processor(processor)
{
    enableCloning<UndoCommand>();
    getGUIDescriptors().front()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    qel::events::EventHandler* events = qel::events::EventHandler::getInstance();
    EventManager* manager = EventManager::getInstance();
    manager->registerEventFunction(events->addEvent("Global", "UNDO_AVAILABLE"),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(true); }),
                                   this);
    manager->registerEventFunction(events->addEvent("Global", "UNDO_NOT_AVAILABLE"),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(false); }),
                                   this);
    availabilityChanged(UndoRedoManager::getInstance()->canUndo());
}

// Working copies only run; the prototype keeps the menu entry up to date.
UndoCommand::UndoCommand(const UndoCommand& other) : Command(other), processor(other.processor)
{
}

UndoCommand::~UndoCommand()
{
    EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void UndoCommand::execute()
{
    UndoRedoManager* history = UndoRedoManager::getInstance();
    if (!history->canUndo())
        processor->reportMessage(QObject::tr("Nothing to undo"), 2000);
    else if (!history->undo())
        processor->reportMessage(QObject::tr("Undo failed"));
}

void UndoCommand::availabilityChanged(bool available)
{
    disableGUIDescriptors(getGUIDescriptors(), !available);
}

} // namespace main
} // namespace qel
