#include "kernel/main/undocommand.h"

#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const UndoCommand::CommandName = "undo";

UndoCommand::UndoCommand(CommandProcessor* processor)
    : HistoryStepCommand(processor, {CommandName, QObject::tr("Undoes the last change"), 10, QObject::tr("Undo"),
                                     QObject::tr("Undo the last change"), QKeySequence(Qt::CTRL | Qt::Key_Z),
                                     "UNDO_AVAILABLE", "UNDO_NOT_AVAILABLE", QObject::tr("Nothing to undo"),
                                     QObject::tr("Undo failed")})
{
    enableCloning<UndoCommand>();
    followAvailability();
}

bool UndoCommand::canStep() const
{
    return UndoRedoManager::getInstance()->canUndo();
}

bool UndoCommand::takeStep()
{
    return UndoRedoManager::getInstance()->undo();
}

} // namespace main
} // namespace qel
