#pragma once

#include <QObject>
#include <QString>
#include <functional>
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

    // Participants tell how far their save or load has come, 0 to 100 of their own share,
    // from the thread that called them; the project file turns it into the progress of the
    // whole. Outside a save or open it goes nowhere.
    typedef std::function<void(int percent, const QString& text)> ProgressFunction;
    void reportProgress(int percent, const QString& text) const;
    void setProgressFunction(const ProgressFunction& function) { progressFunction = function; }

signals:
    void modifiedChanged(bool modified);
    void currentFileChanged(const QString& path);

private:
    ProjectManager() = default;

    std::vector<ProjectParticipant*> participants;
    QString currentFile;
    bool modified = false;
    ProgressFunction progressFunction;
};

} // namespace io
} // namespace qel
