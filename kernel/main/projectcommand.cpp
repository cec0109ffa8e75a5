#include "kernel/main/projectcommand.h"

#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/parameter.h"

#include <QFileInfo>
#include <QObject>
#include <stdexcept>

namespace qel {
namespace main {

ProjectCommand::ProjectCommand(CommandProcessor* processor, CommandDescriptor* descriptor)
    : Command(descriptor), processor(processor)
{
}

// A working copy starts without an abort.
ProjectCommand::ProjectCommand(const ProjectCommand& other) : Command(other), processor(other.processor)
{
}

void ProjectCommand::abort()
{
    Command::abort();
    abortRequested = true;
}

void ProjectCommand::addFileParameterSet(int id, const QString& description)
{
    auto* set = new ParameterSet(id, description);
    set->addParameter(new Parameter<QString>(QStringLiteral("file"), QObject::tr("The project file")));
    addParameterSet(set);
}

QString ProjectCommand::selectedFile() const
{
    if (!selectedParameterSet || selectedParameterSet->size() == 0)
        return QString();
    Parameter<QString> file(QStringLiteral("noName"), QStringLiteral("noDesc"), QString(), true, nullptr);
    if (!typeSolver.solve(&file, selectedParameterSet->getParameter(0)))
        throw std::runtime_error(QObject::tr("Parameter failure").toStdString());
    const QString path = file.getValue()->trimmed();
    return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
}

io::ProjectFile ProjectCommand::makeProjectFile()
{
    io::ProjectFile project(io::ProjectManager::getInstance());
    project.setProgressFunction([this](int percent, const QString& text) {
        if (text != getProcessText())
            updateText(text);
        updateProcessed(percent);
    });
    return project;
}

void ProjectCommand::finish(bool succeeded, const io::ProjectFile& project, const QString& done)
{
    // The progress display hides at 100.
    if (getProcessed() != 100)
        updateProcessed(100);
    if (succeeded) {
        processor->reportMessage(done, 3000);
        return;
    }
    if (project.wasAborted()) {
        processor->reportMessage(project.errorString(), 2000);
        return;
    }
    throw std::runtime_error(project.errorString().toStdString());
}

} // namespace main
} // namespace qel
