#pragma once

#include "plugins/io/readers/readmonitor.h"

#include <QString>

namespace qel {
namespace io {
namespace readers {

class ByteSource;

// Common ground of the file parsers: the reason of a failure, stopping through the
// monitor, and the checks every format shares.
class MeshParser
{
public:
    explicit MeshParser(ReadMonitor* monitor = nullptr);
    virtual ~MeshParser();

    // Why the last parse failed, as a phrase to follow "Could not load 'FILE': ".
    const QString& getError() const { return error; }
    // Whether the last parse ended because the monitor asked it to stop.
    bool wasStopped() const { return stopped; }

protected:
    bool fail(const QString& reason);
    // Reports the position; false (with the failure set) when the read is to stop.
    bool advance(qint64 position);
    // The failure for input that ended early or could not be read from the device.
    bool failTruncated(const ByteSource& source, const QString& where);
    void reset();

    static QString quoted(const char* text, std::size_t length);

private:
    ReadMonitor* monitor;
    QString error;
    bool stopped;
};

} // namespace readers
} // namespace io
} // namespace qel
