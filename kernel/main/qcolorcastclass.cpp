#include "kernel/main/qcolorcastclass.h"

#include <QColor>

namespace qel {
namespace main {

void* QColorCastClass::castString(const QString& text)
{
    if (!isCastable(text))
        throwNotCastable(text, "a colour", "qel::main::QColorCastClass::castString");
    return new QColor(text.trimmed());
}

bool QColorCastClass::isCastable(const QString& text)
{
    return !text.trimmed().isEmpty();
}

QString QColorCastClass::castBack(void* value)
{
    if (!value)
        return QString();
    const QColor* color = static_cast<QColor*>(value);
    if (!color->isValid())
        return QStringLiteral("invalid");
    return color->name(color->alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
}

} // namespace main
} // namespace qel
