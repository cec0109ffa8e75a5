#pragma once

#include "kernel/main/command.h"

#include <QString>

namespace qel {
namespace io {
class ProjectFile;
}

namespace main {

class CommandProcessor;

// Base of the project commands: a save or open of the project file that reports through
// the command's progress and gives up when the command is aborted.
class ProjectCommand : public Command
{
public:
    ProjectCommand(CommandProcessor* processor, CommandDescriptor* descriptor);
    ProjectCommand(const ProjectCommand& other);

    void abort() override;

protected:
    // Adds a set with the project file as its one parameter.
    void addFileParameterSet(int id, const QString& description);
    // The file of the selected set made absolute, or an empty text without a file set.
    QString selectedFile() const;
    // Reports progress through this command.
    io::ProjectFile makeProjectFile();
    // Success goes to the console; an abort is a warning; a failure throws, so that it is
    // reported once and stops a script like any failed command.
    void finish(bool succeeded, const io::ProjectFile& project, const QString& done);

    CommandProcessor* processor;
    // Polled by the participants; set by abort().
    bool abortRequested = false;
};

} // namespace main
} // namespace qel
