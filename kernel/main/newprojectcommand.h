#pragma once

#include "kernel/main/projectcommand.h"

namespace qel {
namespace main {

// `newproject`: an empty project without a file; every participant is cleared and the undo
// history, which speaks of what is gone, is emptied.
class NewProjectCommand : public ProjectCommand
{
public:
    static const char* const CommandName;

    explicit NewProjectCommand(CommandProcessor* processor);
    NewProjectCommand(const NewProjectCommand& other) = default;

    void execute() override;
};

} // namespace main
} // namespace qel
