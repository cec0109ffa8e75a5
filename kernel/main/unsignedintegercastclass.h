#pragma once

#include "kernel/main/numbercastclass.h"

namespace qel {
namespace main {

// Non-negative whole numbers in base 10.
class UnsignedIntegerCastClass : public NumberCastClass<unsigned int>
{
public:
    UnsignedIntegerCastClass();
    QString castBack(void* value) override;

protected:
    unsigned int parse(const QString& text, bool* ok) const override;
};

} // namespace main
} // namespace qel
