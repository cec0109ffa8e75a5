#pragma once

#include "kernel/main/projectcommand.h"

namespace qel {
namespace main {

// `saveproject(FILE)` saves the project to the file, which becomes the current one;
// `saveproject` saves it to the current file. A failed or aborted save leaves the file as
// it was.
class SaveProjectCommand : public ProjectCommand
{
public:
    static const char* const CommandName;

    explicit SaveProjectCommand(CommandProcessor* processor);
    SaveProjectCommand(const SaveProjectCommand& other) = default;

    void execute() override;
};

} // namespace main
} // namespace qel
