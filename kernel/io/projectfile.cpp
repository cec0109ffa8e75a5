#include "kernel/io/projectfile.h"

#include "kernel/io/projectmanager.h"
#include "kernel/io/projectparticipant.h"
#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"
#include "kernel/log/logger.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace qel {
namespace io {

namespace {

const char* const LogFile = "kernel/io/projectfile";
// The archive's own failures are reported in our words: its log lines stay at debugging.
const unsigned int QuietLevel = 4000;
// Writing "project.xml" and syncing take the last part of a save.
const int SectionsShare = 90;
const qint64 TarBlock = 512;
const int TarMagicAt = 257;

// Routes the participants' progress into the share of one of them while it lives.
class ProgressScope
{
public:
    ProgressScope(ProjectManager* manager, const ProjectManager::ProgressFunction& function) : manager(manager)
    {
        manager->setProgressFunction(function);
    }
    ~ProgressScope() { manager->setProgressFunction(ProjectManager::ProgressFunction()); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

private:
    ProjectManager* manager;
};

// Our archives start with a ustar header; anything else was never a project file.
bool looksLikeTar(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return true; // the archive reports why it can't be read
    const QByteArray header = file.read(TarBlock);
    return header.size() == TarBlock && header.mid(TarMagicAt, 5) == "ustar";
}

// The rename is only lasting once the folder's entry is on the disk as well.
void syncFolder(const QString& folder)
{
    const int handle = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    if (handle < 0)
        return;
    ::fsync(handle);
    ::close(handle);
}

QFileDevice::Permissions newFilePermissions(const QFileInfo& target)
{
    if (target.exists())
        return target.permissions();
    return QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
}

} // namespace

const char* const ProjectFile::Suffix = "qelproj";
const char* const ProjectFile::ProjectEntry = "project.xml";
const char* const ProjectFile::RootElement = "project";
const char* const ProjectFile::Version = "1";

ProjectFile::ProjectFile(ProjectManager* manager) : manager(manager)
{
}

void ProjectFile::reset()
{
    error.clear();
    aborted = false;
    warnings.clear();
}

bool ProjectFile::fail(const QString& message)
{
    error = message;
    return false;
}

bool ProjectFile::failSave(const QString& path, const QString& reason)
{
    return fail(tr("Can't save project '%1': %2").arg(path, reason));
}

bool ProjectFile::failOpen(const QString& path, const QString& reason)
{
    return fail(tr("Can't open project '%1': %2").arg(path, reason));
}

bool ProjectFile::abortWith(const QString& message)
{
    aborted = true;
    return fail(message);
}

// Step `step` of `steps` has come `percent` of its own way.
void ProjectFile::progress(int step, int steps, int percent, const QString& text) const
{
    if (!progressFunction)
        return;
    const int bounded = std::max(0, std::min(100, percent));
    progressFunction((step * 100 + bounded) * SectionsShare / (std::max(steps, 1) * 100), text);
}

void ProjectFile::finished(const QString& text) const
{
    if (progressFunction)
        progressFunction(100, text);
}

void ProjectFile::clear()
{
    reset();
    for (ProjectParticipant* participant : manager->getParticipants())
        participant->clear();
    manager->setCurrentFile(QString());
    manager->setModified(false);
}

// ---------------------------------------------------------------------------------------
// Saving

bool ProjectFile::save(const QString& path, const bool& abort)
{
    reset();
    if (path.isEmpty())
        return fail(tr("Can't save the project: no file given"));
    const QFileInfo given(path);
    const QFileInfo target(given.isSymLink() ? given.symLinkTarget() : given.absoluteFilePath());
    if (target.isDir())
        return failSave(path, tr("it is a folder"));
    const QFileInfo folder(target.absolutePath());
    if (!folder.isDir())
        return failSave(path, tr("the folder '%1' does not exist").arg(folder.filePath()));

    QTemporaryFile temporary(QDir(folder.filePath()).filePath(QLatin1Char('.') + target.fileName()
                                                               + QStringLiteral(".XXXXXX")));
    if (!temporary.open())
        return failSave(path, tr("can't write in the folder '%1': %2").arg(folder.filePath(), temporary.errorString()));
    temporary.close();
    if (!writeArchive(path, temporary.fileName(), abort))
        return false;
    QFile::setPermissions(temporary.fileName(), newFilePermissions(target));
    if (std::rename(QFile::encodeName(temporary.fileName()).constData(),
                    QFile::encodeName(target.filePath()).constData()) != 0)
        return failSave(path, qt_error_string(errno));
    temporary.setAutoRemove(false);
    syncFolder(folder.filePath());
    finished(tr("Project saved"));
    manager->setCurrentFile(target.filePath());
    manager->setModified(false);
    return true;
}

bool ProjectFile::writeArchive(const QString& path, const QString& temporaryPath, const bool& abort)
{
    ZTarFile tar(temporaryPath);
    tar.setErrorLevel(QuietLevel);
    if (!tar.open(QIODevice::WriteOnly))
        return failSave(path, tar.errorString());
    QByteArray xml;
    if (!writeSections(path, &xml, &tar, abort)) {
        tar.close();
        return false;
    }
    progress(1, 1, 0, tr("Writing %1").arg(ProjectEntry));
    if (!tar.addData(xml, ProjectEntry) || !tar.closeAndSync())
        return failSave(path, tar.errorString());
    if (abort)
        return abortWith(tr("Saving project '%1' was aborted").arg(path));
    return true;
}

bool ProjectFile::writeSections(const QString& path, QByteArray* xml, ZTarFile* tar, const bool& abort)
{
    QBuffer buffer(xml);
    buffer.open(QIODevice::WriteOnly);
    QXmlStreamWriter writer(&buffer);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(RootElement);
    writer.writeAttribute(QStringLiteral("version"), Version);
    const std::vector<ProjectParticipant*> participants = manager->getParticipants();
    const int steps = int(participants.size());
    for (int step = 0; step < steps; ++step) {
        ProjectParticipant* participant = participants[size_t(step)];
        const QString section = participant->sectionName();
        const ProgressScope scope(manager, [this, step, steps](int percent, const QString& text) {
            progress(step, steps, percent, text);
        });
        progress(step, steps, 0, tr("Saving %1").arg(section));
        writer.writeStartElement(section);
        QString reason;
        const bool written = participant->save(&writer, tar, abort, reason);
        if (abort)
            return abortWith(tr("Saving project '%1' was aborted").arg(path));
        if (!written)
            return failSave(path, reason.isEmpty() ? tr("the section '%1' can't be written").arg(section) : reason);
        writer.writeEndElement();
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    return true;
}

// ---------------------------------------------------------------------------------------
// Opening

bool ProjectFile::open(const QString& path, bool& abort)
{
    reset();
    if (path.isEmpty())
        return fail(tr("Can't open a project: no file given"));
    const QFileInfo info(path);
    if (!info.exists())
        return failOpen(path, tr("the file does not exist"));
    if (info.isDir())
        return failOpen(path, tr("it is a folder"));
    if (!looksLikeTar(path))
        return failOpen(path, tr("it is not a tar archive"));
    ZTarFile tar(path);
    tar.setErrorLevel(QuietLevel);
    if (!tar.open(QIODevice::ReadOnly))
        return failOpen(path, tar.errorString());
    std::unique_ptr<ZFile> entry(tar.getFile(ProjectEntry));
    if (!entry)
        return failOpen(path, tr("the archive holds no \"%1\"").arg(ProjectEntry));
    if (!entry->open(QIODevice::ReadOnly))
        return failOpen(path, tr("\"%1\" can't be read: %2").arg(ProjectEntry, entry->errorString()));

    QXmlStreamReader reader(entry.get());
    std::vector<ProjectParticipant*> loaded;
    const bool read = readSections(path, &reader, &tar, abort, &loaded);
    if (!read || abort) {
        for (ProjectParticipant* participant : loaded)
            participant->discard();
        if (abort && error.isEmpty())
            abortWith(tr("Opening project '%1' was aborted").arg(path));
        return false;
    }
    commitOrClear(loaded);
    finished(tr("Project opened"));
    manager->setCurrentFile(info.absoluteFilePath());
    manager->setModified(false);
    return true;
}

void ProjectFile::commitOrClear(const std::vector<ProjectParticipant*>& loaded)
{
    for (ProjectParticipant* participant : manager->getParticipants()) {
        if (std::find(loaded.begin(), loaded.end(), participant) != loaded.end())
            participant->commit();
        else
            participant->clear();
    }
}

ProjectParticipant* ProjectFile::findParticipant(const QString& section) const
{
    for (ProjectParticipant* participant : manager->getParticipants()) {
        if (participant->sectionName() == section)
            return participant;
    }
    return nullptr;
}

bool ProjectFile::failXml(const QString& path, const QXmlStreamReader* reader)
{
    return failOpen(path, tr("\"%1\" is malformed at line %2, column %3: %4")
                              .arg(ProjectEntry)
                              .arg(reader->lineNumber())
                              .arg(reader->columnNumber())
                              .arg(reader->errorString()));
}

bool ProjectFile::readProjectElement(const QString& path, QXmlStreamReader* reader)
{
    if (!reader->readNextStartElement())
        return reader->hasError() ? failXml(path, reader)
                                  : failOpen(path, tr("\"%1\" holds no project").arg(ProjectEntry));
    if (reader->name() != QLatin1String(RootElement))
        return failOpen(path, tr("\"%1\" holds <%2>, not a project").arg(ProjectEntry, reader->name().toString()));
    const QStringRef version = reader->attributes().value(QStringLiteral("version"));
    if (version != QLatin1String(Version))
        return failOpen(path, tr("the project's version '%1' is not supported").arg(version.toString()));
    return true;
}

bool ProjectFile::readSections(const QString& path, QXmlStreamReader* reader, ZTarFile* tar, bool& abort,
                               std::vector<ProjectParticipant*>* loaded)
{
    if (!readProjectElement(path, reader))
        return false;
    const int steps = int(manager->getParticipants().size());
    while (reader->readNextStartElement()) {
        const QString section = reader->name().toString();
        ProjectParticipant* participant = findParticipant(section);
        if (!participant) {
            const QString warning = tr("Project '%1': the unknown section <%2> is skipped").arg(path, section);
            log::Logger::log(2000, LogFile, __LINE__, "qel::io::ProjectFile::readSections", nullptr, warning);
            warnings << warning;
            reader->skipCurrentElement();
            continue;
        }
        if (std::find(loaded->begin(), loaded->end(), participant) != loaded->end())
            return failOpen(path, tr("the section <%1> appears twice").arg(section));
        loaded->push_back(participant);
        const int step = int(loaded->size()) - 1;
        const ProgressScope scope(manager, [this, step, steps](int percent, const QString& text) {
            progress(step, steps, percent, text);
        });
        progress(step, steps, 0, tr("Opening %1").arg(section));
        if (!readSection(path, reader, tar, abort, participant))
            return false;
    }
    // The rest of the document must be well formed too.
    while (!reader->hasError() && !reader->atEnd())
        reader->readNext();
    return reader->hasError() ? failXml(path, reader) : true;
}

bool ProjectFile::readSection(const QString& path, QXmlStreamReader* reader, ZTarFile* tar, bool& abort,
                              ProjectParticipant* participant)
{
    const QString section = participant->sectionName();
    QString reason;
    const bool read = participant->load(reader, tar, abort, reason);
    if (abort)
        return abortWith(tr("Opening project '%1' was aborted").arg(path));
    if (reader->hasError())
        return failXml(path, reader);
    if (!read)
        return failOpen(path, reason.isEmpty() ? tr("the section <%1> can't be read").arg(section) : reason);
    if (!reader->isEndElement() || reader->name() != section)
        return failOpen(path, tr("the section <%1> was not read to its end").arg(section));
    return true;
}

} // namespace io
} // namespace qel
