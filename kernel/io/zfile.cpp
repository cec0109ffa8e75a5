#include "kernel/io/zfile.h"

#include "kernel/log/logger.h"

#include <algorithm>

namespace qel {
namespace io {

ZFile::ZFile(const QString& archivePath, const QString& memberName, qint64 dataOffset, qint64 dataSize)
    : archive(archivePath), memberName(memberName), dataOffset(dataOffset), dataSize(dataSize)
{
}

ZFile::~ZFile()
{
    close();
}

bool ZFile::open(OpenMode mode)
{
    if (mode & (WriteOnly | Append | Truncate)) {
        setErrorString(QStringLiteral("A member of an archive can only be read"));
        qel::log::Logger::log(0, "kernel/io/zfile", 25, "qel::io::ZFile::open", nullptr,
                              "'%s' can only be opened for reading", qPrintable(memberName));
        return false;
    }
    if (!archive.open(QIODevice::ReadOnly)) {
        setErrorString(archive.errorString());
        qel::log::Logger::log(1000, "kernel/io/zfile", 31, "qel::io::ZFile::open", nullptr,
                              "Couldn't open archive '%s' to read '%s': %s", qPrintable(archive.fileName()),
                              qPrintable(memberName), qPrintable(archive.errorString()));
        return false;
    }
    // Unbuffered, so that pos() inside readData is the position in the member.
    return QIODevice::open(mode | Unbuffered);
}

void ZFile::close()
{
    if (!isOpen())
        return;
    QIODevice::close();
    archive.close();
}

qint64 ZFile::size() const
{
    return dataSize;
}

bool ZFile::isSequential() const
{
    return false;
}

qint64 ZFile::readData(char* data, qint64 maxSize)
{
    const qint64 left = dataSize - pos();
    if (left <= 0)
        return 0;
    if (!archive.seek(dataOffset + pos()))
        return -1;
    return archive.read(data, std::min(left, maxSize));
}

qint64 ZFile::writeData(const char*, qint64)
{
    return -1;
}

} // namespace io
} // namespace qel
