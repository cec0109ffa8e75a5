#pragma once

namespace qel {
namespace main {

class CommandProcessor;

// Registers undo, redo, recordmacro, stopmacro, runmacro, newproject, openproject and
// saveproject with the processor.
void registerHostCommands(CommandProcessor* processor);

} // namespace main
} // namespace qel
