#include "kernel/main/doublecastclass.h"

namespace qel {
namespace main {

DoubleCastClass::DoubleCastClass() : NumberCastClass("a number", "qel::main::DoubleCastClass::castString") {}

QString DoubleCastClass::castBack(void* value)
{
    return value ? numberLocale().toString(*static_cast<double*>(value), 'g', QLocale::FloatingPointShortest) : QString();
}

double DoubleCastClass::parse(const QString& text, bool* ok) const
{
    return finiteOrFail(numberLocale().toDouble(text.trimmed(), ok), ok);
}

} // namespace main
} // namespace qel
