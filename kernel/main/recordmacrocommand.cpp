#include "kernel/main/recordmacrocommand.h"

#include "kernel/main/commandprocessor.h"
#include "kernel/main/parameter.h"

#include <QObject>

namespace qel {
namespace main {

const char* const RecordMacroCommand::CommandName = "recordmacro";

RecordMacroCommand::RecordMacroCommand(CommandProcessor* processor)
    : Command(new CommandDescriptor(CommandName, QObject::tr("Records the following commands into a macro file"))),
      processor(processor)
{
    enableCloning<RecordMacroCommand>();
    setRecordable(false);
    auto* set = new ParameterSet(0, QObject::tr("Macro file"));
    set->addParameter(new Parameter<QString>(QStringLiteral("file"), QObject::tr("The file the macro is written to")));
    addParameterSet(set);
}

void RecordMacroCommand::execute()
{
    Parameter<QString> file(QStringLiteral("noName"), QStringLiteral("noDesc"), QString(), true, nullptr);
    if (!selectedParameterSet || !typeSolver.solve(&file, selectedParameterSet->getParameter(0))) {
        processor->reportMessage(QObject::tr("Parameter failure"), 2000);
        return;
    }
    if (processor->isRecording())
        processor->reportMessage(QObject::tr("A macro is being recorded already into '%1'")
                                     .arg(processor->getMacroRecorder()->getFile()));
    else if (!processor->getMacroRecorder()->start(*file.getValue()))
        processor->reportMessage(QObject::tr("Can't write the macro file '%1'").arg(*file.getValue()));
}

} // namespace main
} // namespace qel
