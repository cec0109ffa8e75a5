#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

class CommandProcessor;

// `undo`: takes back the last step of the undo history. Its menu entry follows
// whether there is anything to undo.
class UndoCommand : public Command
{
public:
    static const char* const CommandName;

    explicit UndoCommand(CommandProcessor* processor);
    UndoCommand(const UndoCommand& other);
    ~UndoCommand() override;

    void execute() override;

private:
    void availabilityChanged(bool available);

    CommandProcessor* processor;
};

} // namespace main
} // namespace qel
