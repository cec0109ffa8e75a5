#include "kernel/main/stopmacrocommand.h"

#include "kernel/main/commandprocessor.h"

#include <QObject>

namespace qel {
namespace main {

const char* const StopMacroCommand::CommandName = "stopmacro";

StopMacroCommand::StopMacroCommand(CommandProcessor* processor)
    : Command(new CommandDescriptor(CommandName, QObject::tr("Stops recording a macro and writes its file"))),
      processor(processor)
{
    enableCloning<StopMacroCommand>();
    setRecordable(false);
}

void StopMacroCommand::execute()
{
    MacroRecorder* recorder = processor->getMacroRecorder();
    if (!recorder->isRecording()) {
        processor->reportMessage(QObject::tr("No macro is being recorded"));
        return;
    }
    const QString file = recorder->getFile();
    if (!recorder->stop())
        processor->reportMessage(QObject::tr("Can't write the macro file '%1'").arg(file));
}

} // namespace main
} // namespace qel
