#pragma once

#include "kernel/main/projectcommand.h"

namespace qel {
namespace main {

// `openproject(FILE)`: replaces the project by the one in the file, or, when the file is
// refused or the open aborted, leaves everything as it was. The undo history is emptied
// after an open: its steps speak of what is gone.
class OpenProjectCommand : public ProjectCommand
{
public:
    static const char* const CommandName;

    explicit OpenProjectCommand(CommandProcessor* processor);
    OpenProjectCommand(const OpenProjectCommand& other) = default;

    void execute() override;
};

} // namespace main
} // namespace qel
