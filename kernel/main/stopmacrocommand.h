#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

class CommandProcessor;

// `stopmacro`: ends the recording and writes the macro file.
class StopMacroCommand : public Command
{
public:
    static const char* const CommandName;

    explicit StopMacroCommand(CommandProcessor* processor);
    StopMacroCommand(const StopMacroCommand& other) = default;

    void execute() override;

private:
    CommandProcessor* processor;
};

} // namespace main
} // namespace qel
