#include "kernel/main/redocommand.h"

#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const RedoCommand::CommandName = "redo";

RedoCommand::RedoCommand(CommandProcessor* processor)
    : HistoryStepCommand(processor, {CommandName, QObject::tr("Redoes the last undone change"), 20, QObject::tr("Redo"),
                                     QObject::tr("Redo the last undone change"), QKeySequence(Qt::CTRL | Qt::Key_Y),
                                     "REDO_AVAILABLE", "REDO_NOT_AVAILABLE", QObject::tr("Nothing to redo"),
                                     QObject::tr("Redo failed")})
{
    enableCloning<RedoCommand>();
    followAvailability();
}

bool RedoCommand::canStep() const
{
    return UndoRedoManager::getInstance()->canRedo();
}

bool RedoCommand::takeStep()
{
    return UndoRedoManager::getInstance()->redo();
}

} // namespace main
} // namespace qel
