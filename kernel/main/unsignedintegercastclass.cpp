#include "kernel/main/unsignedintegercastclass.h"

namespace qel {
namespace main {

void* UnsignedIntegerCastClass::castString(const QString& text)
{
    bool ok = false;
    const unsigned int number = parse(text, &ok);
    if (!ok)
        throwNotCastable(text, "a non-negative whole number", "qel::main::UnsignedIntegerCastClass::castString");
    return new unsigned int(number);
}

bool UnsignedIntegerCastClass::isCastable(const QString& text)
{
    bool ok = false;
    parse(text, &ok);
    return ok;
}

QString UnsignedIntegerCastClass::castBack(void* value)
{
    return value ? QString::number(*static_cast<unsigned int*>(value)) : QString();
}

unsigned int UnsignedIntegerCastClass::parse(const QString& text, bool* ok)
{
    return numberLocale().toUInt(text.trimmed(), ok);
}

} // namespace main
} // namespace qel
