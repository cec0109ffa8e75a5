#include "plugins/io/readers/meshparser.h"

#include "plugins/io/readers/bytesource.h"

namespace qel {
namespace io {
namespace readers {

MeshParser::MeshParser(ReadMonitor* monitor) : monitor(monitor), stopped(false) {}

MeshParser::~MeshParser() = default;

bool MeshParser::fail(const QString& reason)
{
    if (error.isEmpty())
        error = reason;
    return false;
}

bool MeshParser::advance(qint64 position)
{
    if (monitor == nullptr || monitor->advance(position))
        return true;
    stopped = true;
    return fail(QStringLiteral("reading was aborted"));
}

bool MeshParser::failTruncated(const ByteSource& source, const QString& where)
{
    if (source.hasFailed())
        return fail(QStringLiteral("the file could not be read (%1)").arg(source.getDeviceError()));
    return fail(QStringLiteral("the file is truncated: it ends %1").arg(where));
}

void MeshParser::reset()
{
    error.clear();
    warnings.clear();
    stopped = false;
}

QString MeshParser::quoted(const char* text, std::size_t length)
{
    const std::size_t shown = std::min<std::size_t>(length, 40);
    QString result = QString::fromLatin1(text, static_cast<int>(shown));
    for (QChar& c : result) {
        if (!c.isPrint())
            c = QLatin1Char('?');
    }
    return QLatin1Char('\'') + result + (shown < length ? QStringLiteral("...'") : QStringLiteral("'"));
}

} // namespace readers
} // namespace io
} // namespace qel
