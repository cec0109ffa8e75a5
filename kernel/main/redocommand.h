#pragma once

#include "kernel/main/historystepcommand.h"

namespace qel {
namespace main {

// `redo`: repeats the last step that was undone.
class RedoCommand : public HistoryStepCommand
{
public:
    static const char* const CommandName;

    explicit RedoCommand(CommandProcessor* processor);

protected:
    bool canStep() const override;
    bool takeStep() override;
};

} // namespace main
} // namespace qel
