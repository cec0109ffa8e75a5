#pragma once

#include "plugins/io/readers/readmonitor.h"
#include "plugins/io/readers/readwarnings.h"

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
    // What the last parse skipped or put up with, each naming its place in the file.
    const ReadWarnings& getWarnings() const { return warnings; }

    // The text in single quotes for a message: at most 40 characters, unprintable ones as '?'.
    static QString quoted(const char* text, std::size_t length);

protected:
    bool fail(const QString& reason);
    void warn(const ReadWarnings& more) { warnings.append(more); }
    void warn(const QString& warning) { warnings.add(warning); }
    // Reports the position; false (with the failure set) when the read is to stop.
    bool advance(qint64 position);
    // The failure for input that ended early or could not be read from the device.
    bool failTruncated(const ByteSource& source, const QString& where);
    void reset();

private:
    ReadMonitor* monitor;
    QString error;
    ReadWarnings warnings;
    bool stopped;
};

} // namespace readers
} // namespace io
} // namespace qel
