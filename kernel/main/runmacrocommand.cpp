#include "kernel/main/runmacrocommand.h"

#include "kernel/main/commandprocessor.h"
#include "kernel/main/parameter.h"

#include <QObject>

namespace qel {
namespace main {

const char* const RunMacroCommand::CommandName = "runmacro";

RunMacroCommand::RunMacroCommand(CommandProcessor* processor)
    : Command(new CommandDescriptor(CommandName, QObject::tr("Runs the commands of a macro file"))),
      processor(processor)
{
    enableCloning<RunMacroCommand>();
    auto* set = new ParameterSet(0, QObject::tr("Macro file"));
    set->addParameter(new Parameter<QString>(QStringLiteral("file"), QObject::tr("The macro file to run")));
    addParameterSet(set);
}

// runMacro reports a failing line itself.
void RunMacroCommand::execute()
{
    Parameter<QString> file(QStringLiteral("noName"), QStringLiteral("noDesc"), QString(), true, nullptr);
    if (!selectedParameterSet || !typeSolver.solve(&file, selectedParameterSet->getParameter(0))) {
        processor->reportMessage(QObject::tr("Parameter failure"), 2000);
        return;
    }
    processor->runMacro(*file.getValue());
}

} // namespace main
} // namespace qel
