#include "kernel/main/floatcastclass.h"

namespace qel {
namespace main {

void* FloatCastClass::castString(const QString& text)
{
    bool ok = false;
    const float number = parse(text, &ok);
    if (!ok)
        throwNotCastable(text, "a number", "qel::main::FloatCastClass::castString");
    return new float(number);
}

bool FloatCastClass::isCastable(const QString& text)
{
    bool ok = false;
    parse(text, &ok);
    return ok;
}

QString FloatCastClass::castBack(void* value)
{
    return value ? numberLocale().toString(static_cast<double>(*static_cast<float*>(value)), 'g', 9) : QString();
}

float FloatCastClass::parse(const QString& text, bool* ok)
{
    return static_cast<float>(finiteOrFail(numberLocale().toFloat(text.trimmed(), ok), ok));
}

} // namespace main
} // namespace qel
