#include "kernel/main/integercastclass.h"

namespace qel {
namespace main {

IntegerCastClass::IntegerCastClass() : NumberCastClass("a whole number", "qel::main::IntegerCastClass::castString") {}

QString IntegerCastClass::castBack(void* value)
{
    return value ? QString::number(*static_cast<int*>(value)) : QString();
}

int IntegerCastClass::parse(const QString& text, bool* ok) const
{
    return numberLocale().toInt(text.trimmed(), ok);
}

} // namespace main
} // namespace qel
