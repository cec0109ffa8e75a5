#pragma once

#include <QObject>
#include <QString>
#include <vector>

namespace qel {
namespace io {

class ProjectParticipant;

// The project of the running host: the participants that make up a project file, the file
// the project was last saved to or opened from, and whether it has unsaved changes.
class ProjectManager : public QObject
{
    Q_OBJECT

public:
    static ProjectManager* getInstance();

    // Participants are called in the order they registered; the caller keeps ownership and
    // removes the participant before it goes away.
    void addParticipant(ProjectParticipant* participant);
    void removeParticipant(ProjectParticipant* participant);
    const std::vector<ProjectParticipant*>& getParticipants() const { return participants; }

    // Participants report changes of their live state here, from any thread.
    void markModified();
    void setModified(bool modified);
    bool isModified() const { return modified; }

    const QString& getCurrentFile() const { return currentFile; }
    void setCurrentFile(const QString& path);

signals:
    void modifiedChanged(bool modified);
    void currentFileChanged(const QString& path);

private:
    ProjectManager() = default;

    std::vector<ProjectParticipant*> participants;
    QString currentFile;
    bool modified = false;
};

} // namespace io
} // namespace qel
