#include "kernel/main/doublecastclass.h"

namespace qel {
namespace main {

void* DoubleCastClass::castString(const QString& text)
{
    bool ok = false;
    const double number = parse(text, &ok);
    if (!ok)
        throwNotCastable(text, "a number", "qel::main::DoubleCastClass::castString");
    return new double(number);
}

bool DoubleCastClass::isCastable(const QString& text)
{
    bool ok = false;
    parse(text, &ok);
    return ok;
}

QString DoubleCastClass::castBack(void* value)
{
    return value ? numberLocale().toString(*static_cast<double*>(value), 'g', QLocale::FloatingPointShortest) : QString();
}

double DoubleCastClass::parse(const QString& text, bool* ok)
{
    return finiteOrFail(numberLocale().toDouble(text.trimmed(), ok), ok);
}

} // namespace main
} // namespace qel
