#pragma once

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <vector>

namespace qel {
namespace io {

class ZFile;

// A POSIX ustar archive on disk, the format of the project files. Names longer than
// the header allows go into the ustar prefix when they can be split, otherwise into
// a GNU long-name record; when reading, pax path and size records are understood too.
class ZTarFile
{
public:
    explicit ZTarFile(const QString& archivePath);
    ~ZTarFile();

    // ReadOnly reads the member list; WriteOnly starts a new, empty archive; ReadWrite
    // reads the member list and appends behind the last member. A corrupt or truncated
    // archive is logged and refused.
    bool open(QIODevice::OpenMode mode);
    // Finishes a written archive with its end blocks.
    void close();
    // As close(), but the end blocks and everything before them are flushed to the disk
    // before the file is closed: false, with the reason in errorString(), when any of it
    // failed. Writers that replace a file by the archive call this before the rename.
    bool closeAndSync();
    bool isOpen() const;
    bool isWritable() const;
    const QString& getArchivePath() const { return archivePath; }
    QString errorString() const;
    // The log level of the failures (1000, errors, by default). A caller that reports
    // errorString() in its own words lowers them to keep its message the only error.
    void setErrorLevel(unsigned int level);

    // Copies the whole content of the device into a new member. The abort flag is read
    // between chunks; on abort, or on a read error, the partial member is taken back
    // and false returned. A device that isn't open is opened for reading and closed again.
    bool addFile(QIODevice* data, const QString& name, const bool& abort);
    bool addData(const QByteArray& data, const QString& name);

    // A new device over the member (the caller owns it, and opens it), or null.
    ZFile* getFile(const QString& name);
    bool contains(const QString& name) const;
    // Regular members in archive order; a name given twice appears once.
    QStringList getFileNames() const;

private:
    struct Member
    {
        QString name;
        qint64 dataOffset;
        qint64 size;
    };

    ZTarFile(const ZTarFile&) = delete;
    ZTarFile& operator=(const ZTarFile&) = delete;

    bool readIndex(qint64* endOfMembers);
    bool readRecord(qint64 offset, qint64 size, QByteArray* content);
    bool fail(const char* function, long line, const QString& message);
    bool writeMemberHeaders(const QString& name, qint64 size, qint64* headerOffset);
    bool rollBack(qint64 memberStart);
    bool writePadding(qint64 dataSize);
    bool finishArchive();
    const Member* findMember(const QString& name) const;

    QString archivePath;
    QFile archive;
    QIODevice::OpenMode mode;
    std::vector<Member> members;
    QString lastError;
    unsigned int errorLevel = 1000;
    mutable QMutex mutex;
};

} // namespace io
} // namespace qel
