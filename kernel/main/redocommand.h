#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

class CommandProcessor;

// `redo`: repeats the last step that was undone. Its menu entry follows
// whether there is anything to redo.
class RedoCommand : public Command
{
public:
    static const char* const CommandName;

    explicit RedoCommand(CommandProcessor* processor);
    RedoCommand(const RedoCommand& other);
    ~RedoCommand() override;

    void execute() override;

private:
    void availabilityChanged(bool available);

    CommandProcessor* processor;
};

} // namespace main
} // namespace qel
