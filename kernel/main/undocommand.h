#pragma once

#include "kernel/main/historystepcommand.h"

namespace qel {
namespace main {

// `undo`: takes back the last step of the undo history.
class UndoCommand : public HistoryStepCommand
{
public:
    static const char* const CommandName;

    explicit UndoCommand(CommandProcessor* processor);

protected:
    bool canStep() const override;
    bool takeStep() override;
};

} // namespace main
} // namespace qel
