#include "plugins/io/readers/bytesource.h"

#include <QIODevice>
#include <algorithm>
#include <cstring>

namespace qel {
namespace io {
namespace readers {

namespace {

// Small inputs get a buffer of their size; it grows when a request needs more.
std::size_t initialSize(QIODevice& device)
{
    const qint64 left = device.isSequential() ? 0 : device.size() - device.pos();
    if (left <= 0 || left >= static_cast<qint64>(ByteSource::CHUNK_SIZE))
        return ByteSource::CHUNK_SIZE;
    return std::max<std::size_t>(static_cast<std::size_t>(left) + 1, 4096);
}

} // namespace

ByteSource::ByteSource(QIODevice& device)
    : device(device), buffer(initialSize(device)), begin(0), end(0), consumedBefore(0), exhausted(false), failed(false)
{
}

bool ByteSource::ensure(std::size_t count)
{
    while (available() < count) {
        if (buffer.size() - begin < count) {
            compact();
            if (buffer.size() < count)
                buffer.resize(count);
        }
        if (!fetch())
            return false;
    }
    return true;
}

bool ByteSource::fetch()
{
    if (exhausted)
        return false;
    if (buffer.size() - end < buffer.size() / 4)
        compact();
    if (end == buffer.size())
        buffer.resize(buffer.size() * 2);
    const qint64 got = device.read(buffer.data() + end, static_cast<qint64>(buffer.size() - end));
    if (got < 0) {
        failed = true;
        deviceError = device.errorString();
    }
    if (got <= 0) {
        exhausted = true;
        return false;
    }
    end += static_cast<std::size_t>(got);
    return true;
}

bool ByteSource::atEnd()
{
    return available() == 0 && !fetch();
}

void ByteSource::compact()
{
    if (begin == 0)
        return;
    const std::size_t kept = available();
    if (kept > 0)
        std::memmove(buffer.data(), buffer.data() + begin, kept);
    consumedBefore += static_cast<qint64>(begin);
    begin = 0;
    end = kept;
}

} // namespace readers
} // namespace io
} // namespace qel
