#include "kernel/main/saveprojectcommand.h"

#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"

#include <QObject>
#include <stdexcept>

namespace qel {
namespace main {

const char* const SaveProjectCommand::CommandName = "saveproject";

SaveProjectCommand::SaveProjectCommand(CommandProcessor* processor)
    : ProjectCommand(processor, new CommandDescriptor(CommandName, QObject::tr("Saves the project to a file")))
{
    enableCloning<SaveProjectCommand>();
    addFileParameterSet(0, QObject::tr("Save the project to a file"));
    addParameterSet(new ParameterSet(1, QObject::tr("Save the project to its current file")));
}

void SaveProjectCommand::execute()
{
    QString file = selectedFile();
    if (file.isEmpty())
        file = io::ProjectManager::getInstance()->getCurrentFile();
    if (file.isEmpty())
        throw std::runtime_error(
            QObject::tr("The project has no file yet: save it with saveproject(FILE)").toStdString());
    io::ProjectFile project = makeProjectFile();
    finish(project.save(file, abortRequested), project, QObject::tr("Project saved to '%1'").arg(file));
}

} // namespace main
} // namespace qel
