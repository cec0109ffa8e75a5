#pragma once

#include <QString>
#include <QtGlobal>
#include <cstddef>
#include <vector>

class QIODevice;

namespace qel {
namespace io {
namespace readers {

// Buffered, forward-only access to the bytes of a device, a chunk at a time, so that
// files far larger than memory reserves are read with a small, fixed buffer.
class ByteSource
{
public:
    static constexpr std::size_t CHUNK_SIZE = 1 << 20;

    explicit ByteSource(QIODevice& device);

    // Makes at least `count` bytes available at data(); false when the input ends before
    // (or the device fails: see hasFailed()). The buffer grows for large requests.
    bool ensure(std::size_t count);
    // Reads one more chunk behind what is buffered; false at the end of the input.
    bool fetch();

    const char* data() const { return buffer.data() + begin; }
    std::size_t available() const { return end - begin; }
    void consume(std::size_t count) { begin += count; }
    // Bytes consumed since the start.
    qint64 position() const { return consumedBefore + static_cast<qint64>(begin); }
    bool atEnd();

    bool hasFailed() const { return failed; }
    const QString& getDeviceError() const { return deviceError; }

private:
    void compact();

    QIODevice& device;
    std::vector<char> buffer;
    std::size_t begin;
    std::size_t end;
    qint64 consumedBefore;
    bool exhausted;
    bool failed;
    QString deviceError;
};

} // namespace readers
} // namespace io
} // namespace qel
