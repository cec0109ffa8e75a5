#include "kernel/main/openprojectcommand.h"

#include "kernel/io/projectfile.h"
#include "kernel/main/undoredomanager.h"

#include <QObject>

namespace qel {
namespace main {

const char* const OpenProjectCommand::CommandName = "openproject";

OpenProjectCommand::OpenProjectCommand(CommandProcessor* processor)
    : ProjectCommand(processor, new CommandDescriptor(CommandName, QObject::tr("Opens a project file")))
{
    enableCloning<OpenProjectCommand>();
    addFileParameterSet(0, QObject::tr("Open a project file"));
}

void OpenProjectCommand::execute()
{
    const QString file = selectedFile();
    io::ProjectFile project = makeProjectFile();
    const bool opened = project.open(file, abortRequested);
    if (opened)
        UndoRedoManager::getInstance()->clear();
    finish(opened, project, QObject::tr("Project '%1' opened").arg(file));
}

} // namespace main
} // namespace qel
