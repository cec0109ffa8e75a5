#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {

class CommandProcessor;

// `recordmacro(FILE)`: starts recording the commands that follow into FILE.
class RecordMacroCommand : public Command
{
public:
    static const char* const CommandName;

    explicit RecordMacroCommand(CommandProcessor* processor);
    RecordMacroCommand(const RecordMacroCommand& other) = default;

    void execute() override;

private:
    CommandProcessor* processor;
};

} // namespace main
} // namespace qel
