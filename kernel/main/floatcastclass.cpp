#include "kernel/main/floatcastclass.h"

namespace qel {
namespace main {

FloatCastClass::FloatCastClass() : NumberCastClass("a number", "qel::main::FloatCastClass::castString") {}

QString FloatCastClass::castBack(void* value)
{
    return value ? numberLocale().toString(static_cast<double>(*static_cast<float*>(value)), 'g', 9) : QString();
}

float FloatCastClass::parse(const QString& text, bool* ok) const
{
    return static_cast<float>(finiteOrFail(numberLocale().toFloat(text.trimmed(), ok), ok));
}

} // namespace main
} // namespace qel
