#include "kernel/main/unsignedintegercastclass.h"

namespace qel {
namespace main {

UnsignedIntegerCastClass::UnsignedIntegerCastClass() : NumberCastClass("a non-negative whole number", "qel::main::UnsignedIntegerCastClass::castString") {}

QString UnsignedIntegerCastClass::castBack(void* value)
{
    return value ? QString::number(*static_cast<unsigned int*>(value)) : QString();
}

unsigned int UnsignedIntegerCastClass::parse(const QString& text, bool* ok) const
{
    return numberLocale().toUInt(text.trimmed(), ok);
}

} // namespace main
} // namespace qel
