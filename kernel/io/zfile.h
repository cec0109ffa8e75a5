#pragma once

#include <QFile>
#include <QIODevice>
#include <QString>

namespace qel {
namespace io {

// One member of a tar archive, read in place: a read-only, random-access device over
// the member's bytes. It reads the archive through a handle of its own, so it may be
// used beside the ZTarFile that handed it out and outlive it.
class ZFile : public QIODevice
{
    Q_OBJECT

public:
    ZFile(const QString& archivePath, const QString& memberName, qint64 dataOffset, qint64 dataSize);
    ~ZFile() override;

    // Only reading is possible; a write mode is refused.
    bool open(OpenMode mode) override;
    void close() override;
    qint64 size() const override;
    bool isSequential() const override;

    const QString& getName() const { return memberName; }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    QFile archive;
    QString memberName;
    qint64 dataOffset;
    qint64 dataSize;
};

} // namespace io
} // namespace qel
