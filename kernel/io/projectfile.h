#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

class QXmlStreamReader;

namespace qel {
namespace io {

class ProjectManager;
class ProjectParticipant;
class ZTarFile;

// Saves and opens project files through the participants of the project manager. A
// project file is a tar archive: "project.xml" holds one section per participant, in
// participant order, inside <project version="1">; the participants' own entries lie
// beside it.
//
// Nothing here logs a failure: the caller reports errorString(), one sentence that names
// the file and what is wrong. Unknown sections are skipped with a logged warning.
class ProjectFile
{
    Q_DECLARE_TR_FUNCTIONS(ProjectFile)

public:
    // How far the whole save or open has come, 0 to 100, and what is being done.
    typedef std::function<void(int percent, const QString& text)> ProgressFunction;

    static const char* const Suffix;
    static const char* const ProjectEntry;
    static const char* const RootElement;
    static const char* const Version;

    explicit ProjectFile(ProjectManager* manager);

    void setProgressFunction(const ProgressFunction& function) { progressFunction = function; }

    // Writes the archive beside the target and renames it over the target once it is on the
    // disk, so that a failed or aborted save leaves the old file as it was and no other file
    // behind. Afterwards the target is the manager's current file, unmodified.
    bool save(const QString& path, const bool& abort);
    // Two phases: every participant reads its section into a staged state; then all commit
    // (a participant without a section is cleared) or, on any failure or abort, all discard
    // and the live state is as it was. Afterwards the file is the current one, unmodified.
    bool open(const QString& path, bool& abort);
    // A new project: every participant empty, no current file.
    void clear();

    const QString& errorString() const { return error; }
    bool wasAborted() const { return aborted; }
    // The warnings of the last open (skipped sections).
    const QStringList& getWarnings() const { return warnings; }

private:
    bool fail(const QString& message);
    bool failSave(const QString& path, const QString& reason);
    bool failOpen(const QString& path, const QString& reason);
    bool abortWith(const QString& message);
    void reset();
    void progress(int step, int steps, int percent, const QString& text) const;
    void finished(const QString& text) const;
    bool writeSections(const QString& path, QByteArray* xml, ZTarFile* tar, const bool& abort);
    bool writeArchive(const QString& path, const QString& temporaryPath, const bool& abort);
    bool readSections(const QString& path, QXmlStreamReader* reader, ZTarFile* tar, bool& abort,
                      std::vector<ProjectParticipant*>* loaded);
    bool readSection(const QString& path, QXmlStreamReader* reader, ZTarFile* tar, bool& abort,
                     ProjectParticipant* participant);
    bool readProjectElement(const QString& path, QXmlStreamReader* reader);
    bool failXml(const QString& path, const QXmlStreamReader* reader);
    void commitOrClear(const std::vector<ProjectParticipant*>& loaded);
    ProjectParticipant* findParticipant(const QString& section) const;

    ProjectManager* manager;
    ProgressFunction progressFunction;
    QString error;
    bool aborted = false;
    QStringList warnings;
};

} // namespace io
} // namespace qel
