#include "kernel/main/boolcastclass.h"

namespace qel {
namespace main {

void* BoolCastClass::castString(const QString& text)
{
    if (!isCastable(text))
        throwNotCastable(text, "0 or 1", "qel::main::BoolCastClass::castString");
    return new bool(text.trimmed() == QLatin1String("1"));
}

bool BoolCastClass::isCastable(const QString& text)
{
    const QString trimmed = text.trimmed();
    return trimmed == QLatin1String("0") || trimmed == QLatin1String("1");
}

QString BoolCastClass::castBack(void* value)
{
    if (!value)
        return QString();
    return *static_cast<bool*>(value) ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace main
} // namespace qel
