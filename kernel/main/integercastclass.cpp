#include "kernel/main/integercastclass.h"

namespace qel {
namespace main {

void* IntegerCastClass::castString(const QString& text)
{
    bool ok = false;
    const int number = parse(text, &ok);
    if (!ok)
        throwNotCastable(text, "a whole number", "qel::main::IntegerCastClass::castString");
    return new int(number);
}

bool IntegerCastClass::isCastable(const QString& text)
{
    bool ok = false;
    parse(text, &ok);
    return ok;
}

QString IntegerCastClass::castBack(void* value)
{
    return value ? QString::number(*static_cast<int*>(value)) : QString();
}

int IntegerCastClass::parse(const QString& text, bool* ok)
{
    return numberLocale().toInt(text.trimmed(), ok);
}

} // namespace main
} // namespace qel
