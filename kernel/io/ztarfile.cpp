#include "kernel/io/ztarfile.h"

#include "kernel/io/zfile.h"
#include "kernel/log/logger.h"

#include <QBuffer>
#include <QDateTime>
#include <QMutexLocker>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace qel {
namespace io {

namespace {

const qint64 BlockSize = 512;
// GNU tar and POSIX write archives in records of 20 blocks.
const qint64 RecordSize = 20 * BlockSize;
const qint64 CopyChunk = 64 * 1024;
// Long names and pax headers are read whole; anything above is a broken archive.
const qint64 MaxMetaRecord = 1024 * 1024;
const qint64 LargestOctalSize = 077777777777LL;

const char* const LongNameMarker = "././@LongLink";

// Field offsets and lengths of a ustar header block.
enum Field {
    NameAt = 0, NameLength = 100,
    ModeAt = 100, UidAt = 108, GidAt = 116, NumericLength = 8,
    SizeAt = 124, MtimeAt = 136, TimeLength = 12,
    ChecksumAt = 148, ChecksumLength = 8,
    TypeAt = 156,
    MagicAt = 257, VersionAt = 263,
    PrefixAt = 345, PrefixLength = 155
};

QByteArray blockPadding(qint64 size)
{
    const qint64 rest = size % BlockSize;
    return QByteArray(rest ? int(BlockSize - rest) : 0, '\0');
}

qint64 paddedSize(qint64 size)
{
    return (size + BlockSize - 1) / BlockSize * BlockSize;
}

void putOctal(QByteArray& block, int at, int length, qint64 value)
{
    const QByteArray digits = QByteArray::number(value, 8).rightJustified(length - 1, '0');
    std::memcpy(block.data() + at, digits.constData(), size_t(length - 1));
    block[at + length - 1] = '\0';
}

// GNU base-256 form for sizes that don't fit in eleven octal digits.
void putBase256(QByteArray& block, int at, int length, qint64 value)
{
    for (int index = length - 1; index > 0; --index) {
        block[at + index] = char(value & 0xff);
        value >>= 8;
    }
    block[at] = char(0x80);
}

bool readNumber(const QByteArray& block, int at, int length, qint64* value)
{
    const unsigned char first = static_cast<unsigned char>(block[at]);
    if (first & 0x80) {
        if (first != 0x80)
            return false; // negative base-256 values aren't sizes
        qint64 result = 0;
        for (int index = 1; index < length; ++index) {
            if (result >> 55)
                return false;
            result = (result << 8) | static_cast<unsigned char>(block[at + index]);
        }
        *value = result;
        return true;
    }
    const QByteArray text = block.mid(at, length).split('\0').first().trimmed();
    if (text.isEmpty()) {
        *value = 0;
        return true;
    }
    bool ok = false;
    *value = text.toLongLong(&ok, 8);
    return ok && *value >= 0;
}

// Field bytes up to the first NUL.
QByteArray readText(const QByteArray& block, int at, int length)
{
    const QByteArray field = block.mid(at, length);
    const int end = field.indexOf('\0');
    return end < 0 ? field : field.left(end);
}

bool isZeroBlock(const QByteArray& block)
{
    for (char byte : block) {
        if (byte)
            return false;
    }
    return true;
}

// Old writers summed signed chars; both sums are accepted.
bool checksumMatches(const QByteArray& block)
{
    qint64 stored = 0;
    if (!readNumber(block, ChecksumAt, ChecksumLength, &stored))
        return false;
    qint64 unsignedSum = 0;
    qint64 signedSum = 0;
    for (int index = 0; index < BlockSize; ++index) {
        const bool inChecksum = index >= ChecksumAt && index < ChecksumAt + ChecksumLength;
        const char byte = inChecksum ? ' ' : block[index];
        unsignedSum += static_cast<unsigned char>(byte);
        signedSum += static_cast<signed char>(byte);
    }
    return stored == unsignedSum || stored == signedSum;
}

void sealChecksum(QByteArray& block)
{
    std::memset(block.data() + ChecksumAt, ' ', ChecksumLength);
    qint64 sum = 0;
    for (char byte : block)
        sum += static_cast<unsigned char>(byte);
    putOctal(block, ChecksumAt, ChecksumLength - 1, sum);
    block[ChecksumAt + ChecksumLength - 1] = ' ';
}

QByteArray headerBlock(const QByteArray& name, const QByteArray& prefix, qint64 size, char type, bool gnuMagic)
{
    QByteArray block(int(BlockSize), '\0');
    std::memcpy(block.data() + NameAt, name.constData(), size_t(qMin(name.size(), int(NameLength))));
    putOctal(block, ModeAt, NumericLength, 0644);
    putOctal(block, UidAt, NumericLength, 0);
    putOctal(block, GidAt, NumericLength, 0);
    if (size > LargestOctalSize)
        putBase256(block, SizeAt, TimeLength, size);
    else
        putOctal(block, SizeAt, TimeLength, size);
    putOctal(block, MtimeAt, TimeLength, QDateTime::currentSecsSinceEpoch());
    block[TypeAt] = type;
    if (gnuMagic)
        std::memcpy(block.data() + MagicAt, "ustar  \0", 8);
    else
        std::memcpy(block.data() + MagicAt, "ustar\0" "00", 8);
    std::memcpy(block.data() + PrefixAt, prefix.constData(), size_t(qMin(prefix.size(), int(PrefixLength))));
    sealChecksum(block);
    return block;
}

// Splits a long name at a slash into a ustar prefix and name; false if no split fits.
bool splitForPrefix(const QByteArray& path, QByteArray* prefix, QByteArray* name)
{
    for (int slash = path.indexOf('/'); slash >= 0; slash = path.indexOf('/', slash + 1)) {
        const int nameLength = path.size() - slash - 1;
        if (slash > PrefixLength)
            return false;
        if (nameLength > 0 && nameLength <= NameLength) {
            *prefix = path.left(slash);
            *name = path.mid(slash + 1);
            return true;
        }
    }
    return false;
}

// pax extended records: "<length> <key>=<value>\n", one after the other.
void readPaxRecords(const QByteArray& content, QString* path, qint64* size)
{
    int at = 0;
    while (at < content.size()) {
        const int blank = content.indexOf(' ', at);
        if (blank < 0)
            return;
        bool ok = false;
        const int length = content.mid(at, blank - at).toInt(&ok);
        if (!ok || length <= blank - at || at + length > content.size())
            return;
        const QByteArray record = content.mid(blank + 1, at + length - blank - 2);
        const int equals = record.indexOf('=');
        if (equals > 0) {
            const QByteArray key = record.left(equals);
            const QByteArray value = record.mid(equals + 1);
            if (key == "path")
                *path = QString::fromUtf8(value);
            else if (key == "size")
                *size = value.toLongLong();
        }
        at += length;
    }
}

bool needsLongNameRecord(const QByteArray& path)
{
    QByteArray prefix;
    QByteArray name;
    return path.size() > NameLength && !splitForPrefix(path, &prefix, &name);
}

// The header of a regular member; a name that needs a long-name record is cut here.
QByteArray memberHeader(const QByteArray& path, qint64 size)
{
    QByteArray prefix;
    QByteArray name = path;
    if (path.size() > NameLength && !splitForPrefix(path, &prefix, &name))
        name = path.left(NameLength);
    return headerBlock(name, prefix, size, '0', false);
}

} // namespace

ZTarFile::ZTarFile(const QString& archivePath) : archivePath(archivePath), archive(archivePath), mode(QIODevice::NotOpen)
{
}

ZTarFile::~ZTarFile()
{
    close();
}

bool ZTarFile::fail(const char* function, long line, const QString& message)
{
    lastError = message;
    qel::log::Logger::log(errorLevel, "kernel/io/ztarfile", line, function, nullptr, message);
    return false;
}

void ZTarFile::setErrorLevel(unsigned int level)
{
    QMutexLocker locker(&mutex);
    errorLevel = level;
}

QString ZTarFile::errorString() const
{
    QMutexLocker locker(&mutex);
    return lastError;
}

bool ZTarFile::isOpen() const
{
    QMutexLocker locker(&mutex);
    return mode != QIODevice::NotOpen;
}

bool ZTarFile::isWritable() const
{
    QMutexLocker locker(&mutex);
    return mode & QIODevice::WriteOnly;
}

bool ZTarFile::open(QIODevice::OpenMode requested)
{
    QMutexLocker locker(&mutex);
    if (mode != QIODevice::NotOpen) {
        qel::log::Logger::log(0, "kernel/io/ztarfile", 232, "qel::io::ZTarFile::open", nullptr,
                              "Archive '%s' is already open", qPrintable(archivePath));
        return false;
    }
    members.clear();
    lastError.clear();
    const bool reading = requested & QIODevice::ReadOnly;
    const bool writing = requested & QIODevice::WriteOnly;
    if (writing && !reading) {
        if (!archive.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fail("qel::io::ZTarFile::open", 243,
                        QStringLiteral("Couldn't create archive '%1': %2").arg(archivePath, archive.errorString()));
        mode = QIODevice::WriteOnly;
        return true;
    }
    if (!reading)
        return fail("qel::io::ZTarFile::open", 249, QStringLiteral("No open mode given for archive '%1'").arg(archivePath));
    const QIODevice::OpenMode fileMode = writing ? QIODevice::ReadWrite : QIODevice::ReadOnly;
    if (!archive.open(fileMode))
        return fail("qel::io::ZTarFile::open", 252,
                    QStringLiteral("Couldn't open archive '%1': %2").arg(archivePath, archive.errorString()));
    qint64 endOfMembers = 0;
    if (!readIndex(&endOfMembers)) {
        archive.close();
        members.clear();
        return false;
    }
    if (writing && !(archive.resize(endOfMembers) && archive.seek(endOfMembers))) {
        archive.close();
        members.clear();
        return fail("qel::io::ZTarFile::open", 262,
                    QStringLiteral("Couldn't append to archive '%1': %2").arg(archivePath, archive.errorString()));
    }
    mode = writing ? QIODevice::ReadWrite : QIODevice::ReadOnly;
    return true;
}

bool ZTarFile::readRecord(qint64 offset, qint64 size, QByteArray* content)
{
    if (!archive.seek(offset))
        return false;
    *content = archive.read(size);
    return content->size() == size;
}

bool ZTarFile::readIndex(qint64* endOfMembers)
{
    const char* const function = "qel::io::ZTarFile::readIndex";
    const qint64 fileSize = archive.size();
    QString longName;
    QString paxPath;
    qint64 paxSize = -1;
    qint64 offset = 0;
    while (offset < fileSize) {
        QByteArray block;
        if (!readRecord(offset, BlockSize, &block))
            return fail(function, 283, QStringLiteral("Archive '%1' is truncated inside the header at offset %2")
                                           .arg(archivePath).arg(offset));
        if (isZeroBlock(block)) {
            *endOfMembers = offset;
            return true;
        }
        if (!checksumMatches(block))
            return fail(function, 290, QStringLiteral("Archive '%1' is corrupt: bad header checksum at offset %2")
                                           .arg(archivePath).arg(offset));
        qint64 size = 0;
        if (!readNumber(block, SizeAt, TimeLength, &size))
            return fail(function, 294, QStringLiteral("Archive '%1' is corrupt: bad member size at offset %2")
                                           .arg(archivePath).arg(offset));
        const char type = block[TypeAt];
        if ((type == '0' || type == '\0' || type == '7') && paxSize >= 0)
            size = paxSize;
        const qint64 dataOffset = offset + BlockSize;
        if (dataOffset + size > fileSize)
            return fail(function, 301, QStringLiteral("Archive '%1' is truncated: member at offset %2 needs %3 bytes")
                                           .arg(archivePath).arg(offset).arg(size));
        if (type == 'L' || type == 'x') {
            QByteArray content;
            if (size > MaxMetaRecord || !readRecord(dataOffset, size, &content))
                return fail(function, 306, QStringLiteral("Archive '%1' is corrupt: bad extended header at offset %2")
                                               .arg(archivePath).arg(offset));
            if (type == 'L')
                longName = QString::fromUtf8(readText(content, 0, content.size()));
            else
                readPaxRecords(content, &paxPath, &paxSize);
        } else if (type == '0' || type == '\0' || type == '7') {
            QString name = QString::fromUtf8(readText(block, NameAt, NameLength));
            const QByteArray prefix = readText(block, PrefixAt, PrefixLength);
            const bool posixMagic = block.mid(MagicAt, 6) == QByteArray("ustar\0", 6);
            if (posixMagic && !prefix.isEmpty())
                name = QString::fromUtf8(prefix) + QLatin1Char('/') + name;
            if (!longName.isEmpty())
                name = longName;
            if (!paxPath.isEmpty())
                name = paxPath;
            members.push_back(Member{name, dataOffset, size});
        }
        if (type != 'L' && type != 'x' && type != 'K' && type != 'g') {
            longName.clear();
            paxPath.clear();
            paxSize = -1;
        }
        offset = dataOffset + paddedSize(size);
    }
    // An archive without its end blocks is accepted as long as no member is cut short;
    // an append fills the missing padding of the last one.
    *endOfMembers = offset;
    return true;
}

bool ZTarFile::writeMemberHeaders(const QString& name, qint64 size, qint64* headerOffset)
{
    const QByteArray path = name.toUtf8();
    if (needsLongNameRecord(path)) {
        const QByteArray longName = path + '\0';
        const QByteArray marker = headerBlock(LongNameMarker, QByteArray(), longName.size(), 'L', true);
        if (archive.write(marker) != BlockSize
            || archive.write(longName + blockPadding(longName.size())) != paddedSize(longName.size()))
            return false;
    }
    *headerOffset = archive.pos();
    return archive.write(memberHeader(path, size)) == BlockSize;
}

bool ZTarFile::writePadding(qint64 dataSize)
{
    const QByteArray padding = blockPadding(dataSize);
    return archive.write(padding) == padding.size();
}

bool ZTarFile::rollBack(qint64 memberStart)
{
    return archive.resize(memberStart) && archive.seek(memberStart);
}

bool ZTarFile::addFile(QIODevice* data, const QString& name, const bool& abort)
{
    const char* const function = "qel::io::ZTarFile::addFile";
    QMutexLocker locker(&mutex);
    if (!(mode & QIODevice::WriteOnly)) {
        qel::log::Logger::log(0, "kernel/io/ztarfile", 370, function, nullptr,
                              "Archive '%s' isn't open for writing; '%s' not added", qPrintable(archivePath),
                              qPrintable(name));
        return false;
    }
    if (!data || name.isEmpty())
        return fail(function, 376, QStringLiteral("No data or no name given for archive '%1'").arg(archivePath));
    const bool openedHere = !data->isOpen();
    if (openedHere && !data->open(QIODevice::ReadOnly))
        return fail(function, 379, QStringLiteral("Couldn't open the data of '%1': %2").arg(name, data->errorString()));
    if (!data->isReadable())
        return fail(function, 381, QStringLiteral("The data of '%1' can't be read").arg(name));
    if (!data->isSequential())
        data->seek(0);

    const qint64 memberStart = archive.pos();
    qint64 headerOffset = 0;
    qint64 written = 0;
    bool ok = writeMemberHeaders(name, 0, &headerOffset);
    QByteArray chunk(int(CopyChunk), '\0');
    while (ok) {
        if (abort) {
            rollBack(memberStart);
            if (openedHere)
                data->close();
            qel::log::Logger::log(3000, "kernel/io/ztarfile", 413, function, nullptr,
                                  "Adding '%s' to the archive was aborted", qPrintable(name));
            return false;
        }
        const qint64 got = data->read(chunk.data(), CopyChunk);
        if (got <= 0) {
            ok = got == 0;
            break;
        }
        ok = archive.write(chunk.constData(), got) == got;
        written += got;
    }
    if (openedHere)
        data->close();
    // The size is known only now: the header is written again in place.
    ok = ok && writePadding(written) && archive.seek(headerOffset)
         && archive.write(memberHeader(name.toUtf8(), written)) == BlockSize;
    if (!ok) {
        rollBack(memberStart);
        return fail(function, 432, QStringLiteral("Couldn't write '%1' to archive '%2': %3")
                                       .arg(name, archivePath, archive.errorString()));
    }
    archive.seek(archive.size());
    members.push_back(Member{name, headerOffset + BlockSize, written});
    return true;
}

bool ZTarFile::addData(const QByteArray& data, const QString& name)
{
    QByteArray copy(data);
    QBuffer buffer(&copy);
    const bool noAbort = false;
    return addFile(&buffer, name, noAbort);
}

const ZTarFile::Member* ZTarFile::findMember(const QString& name) const
{
    // The last member of a name wins, as when the archive is extracted.
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        if (member->name == name)
            return &*member;
    }
    return nullptr;
}

ZFile* ZTarFile::getFile(const QString& name)
{
    QMutexLocker locker(&mutex);
    if (mode == QIODevice::NotOpen) {
        qel::log::Logger::log(0, "kernel/io/ztarfile", 462, "qel::io::ZTarFile::getFile", nullptr,
                              "Archive '%s' isn't open; '%s' not read", qPrintable(archivePath), qPrintable(name));
        return nullptr;
    }
    const Member* member = findMember(name);
    if (!member)
        return nullptr;
    if (mode & QIODevice::WriteOnly)
        archive.flush();
    return new ZFile(archivePath, name, member->dataOffset, member->size);
}

bool ZTarFile::contains(const QString& name) const
{
    QMutexLocker locker(&mutex);
    return findMember(name) != nullptr;
}

QStringList ZTarFile::getFileNames() const
{
    QMutexLocker locker(&mutex);
    QStringList names;
    for (const Member& member : members) {
        if (!names.contains(member.name))
            names.append(member.name);
    }
    return names;
}

bool ZTarFile::finishArchive()
{
    // Two zero blocks end the archive; the last record is filled up with zeros.
    const qint64 end = archive.pos() + 2 * BlockSize;
    const qint64 recordEnd = (end + RecordSize - 1) / RecordSize * RecordSize;
    const QByteArray zeros(int(recordEnd - archive.pos()), '\0');
    return archive.write(zeros) == zeros.size();
}

void ZTarFile::close()
{
    QMutexLocker locker(&mutex);
    if (mode == QIODevice::NotOpen)
        return;
    if (mode & QIODevice::WriteOnly)
        finishArchive();
    archive.close();
    mode = QIODevice::NotOpen;
}

bool ZTarFile::closeAndSync()
{
    QMutexLocker locker(&mutex);
    if (!(mode & QIODevice::WriteOnly)) {
        qel::log::Logger::log(0, "kernel/io/ztarfile", __LINE__, "qel::io::ZTarFile::closeAndSync", nullptr,
                              "Archive '%s' isn't open for writing", qPrintable(archivePath));
        return false;
    }
    bool written = finishArchive() && archive.flush();
    QString reason = archive.errorString();
    if (written && ::fsync(archive.handle()) != 0) {
        written = false;
        reason = qt_error_string(errno);
    }
    archive.close();
    mode = QIODevice::NotOpen;
    if (!written)
        return fail("qel::io::ZTarFile::closeAndSync", __LINE__,
                    QStringLiteral("Couldn't finish archive '%1': %2").arg(archivePath, reason));
    return true;
}

} // namespace io
} // namespace qel
