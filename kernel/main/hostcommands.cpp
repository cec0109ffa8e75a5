#include "kernel/main/hostcommands.h"

#include "kernel/main/commandprocessor.h"
#include "kernel/main/newprojectcommand.h"
#include "kernel/main/openprojectcommand.h"
#include "kernel/main/recordmacrocommand.h"
#include "kernel/main/redocommand.h"
#include "kernel/main/runmacrocommand.h"
#include "kernel/main/saveprojectcommand.h"
#include "kernel/main/stopmacrocommand.h"
#include "kernel/main/undocommand.h"

namespace qel {
namespace main {

void registerHostCommands(CommandProcessor* processor)
{
    if (!processor)
        return;
    Command* commands[] = {new UndoCommand(processor), new RedoCommand(processor), new RecordMacroCommand(processor),
                           new StopMacroCommand(processor), new RunMacroCommand(processor),
                           new NewProjectCommand(processor), new OpenProjectCommand(processor),
                           new SaveProjectCommand(processor)};
    for (Command* command : commands) {
        if (!processor->registerCommand(command))
            delete command;
    }
}

} // namespace main
} // namespace qel
