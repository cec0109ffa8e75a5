#include "kernel/log/logrecord.h"

namespace qel {
namespace log {

QString LogRecord::format() const
{
    return QStringLiteral("[%1] %2:%3 %4: %5").arg(level).arg(file).arg(line).arg(function, text);
}

} // namespace log
} // namespace qel
