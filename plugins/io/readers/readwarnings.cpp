#include "plugins/io/readers/readwarnings.h"

namespace qel {
namespace io {
namespace readers {

void ReadWarnings::add(const QString& warning)
{
    if (kept.size() < KEPT)
        kept << warning;
    ++total;
}

void ReadWarnings::append(const ReadWarnings& other)
{
    for (const QString& warning : other.kept)
        add(warning);
    // Those the other one only counted stay counted.
    total += other.total - other.kept.size();
}

void ReadWarnings::clear()
{
    kept.clear();
    total = 0;
}

QStringList ReadWarnings::list() const
{
    QStringList result = kept;
    if (total > kept.size())
        result << QStringLiteral("%1 more warnings").arg(total - kept.size());
    return result;
}

} // namespace readers
} // namespace io
} // namespace qel
