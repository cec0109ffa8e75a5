#include "kernel/main/newprojectcommand.h"

#include "kernel/io/projectfile.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const NewProjectCommand::CommandName = "newproject";

NewProjectCommand::NewProjectCommand(CommandProcessor* processor)
    : ProjectCommand(processor, new CommandDescriptor(CommandName, QObject::tr("Starts a new, empty project")))
{
    enableCloning<NewProjectCommand>();
}

void NewProjectCommand::execute()
{
    io::ProjectFile project = makeProjectFile();
    project.clear();
    UndoRedoManager::getInstance()->clear();
    processor->reportMessage(QObject::tr("New project"), 3000);
}

} // namespace main
} // namespace qel
