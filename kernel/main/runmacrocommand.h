#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

class CommandProcessor;

// `runmacro(FILE)`: runs the commands of a macro file one after the other. It is recorded
// itself, not the commands of the file.
class RunMacroCommand : public Command
{
public:
    static const char* const CommandName;

    explicit RunMacroCommand(CommandProcessor* processor);
    RunMacroCommand(const RunMacroCommand& other) = default;

    void execute() override;

private:
    CommandProcessor* processor;
};

} // namespace main
} // namespace qel
