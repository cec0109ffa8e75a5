#include "kernel/main/redocommand.h"

#include "kernel/events/eventhandler.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const RedoCommand::CommandName = "redo";

RedoCommand::RedoCommand(CommandProcessor* processor)
    : Command(new CommandDescriptor(CommandName, QObject::tr("Redoes the last undone change")),
              new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, QObject::tr("Edit"), 20, QObject::tr("Redo"),
                                       QObject::tr("Redo the last undone change"), nullptr)),
      processor(processor)
{
    enableCloning<RedoCommand>();
    getGUIDescriptors().front()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Y));
    qel::events::EventHandler* events = qel::events::EventHandler::getInstance();
    EventManager* manager = EventManager::getInstance();
    manager->registerEventFunction(events->addEvent("Global", "REDO_AVAILABLE"),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(true); }),
                                   this);
    manager->registerEventFunction(events->addEvent("Global", "REDO_NOT_AVAILABLE"),
                                   new EventManager::EventFunction([this](const Event*) { availabilityChanged(false); }),
                                   this);
    availabilityChanged(UndoRedoManager::getInstance()->canRedo());
}

// Working copies only run; the prototype keeps the menu entry up to date.
RedoCommand::RedoCommand(const RedoCommand& other) : Command(other), processor(other.processor)
{
}

RedoCommand::~RedoCommand()
{
    EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void RedoCommand::execute()
{
    UndoRedoManager* history = UndoRedoManager::getInstance();
    if (!history->canRedo())
        processor->reportMessage(QObject::tr("Nothing to redo"), 2000);
    else if (!history->redo())
        processor->reportMessage(QObject::tr("Redo failed"));
}

void RedoCommand::availabilityChanged(bool available)
{
    disableGUIDescriptors(getGUIDescriptors(), !available);
}

} // namespace main
} // namespace qel
