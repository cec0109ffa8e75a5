#pragma once

#include "kernel/main/numbercastclass.h"

namespace qel {
namespace main {

// Whole numbers in base 10.
class IntegerCastClass : public NumberCastClass<int>
{
public:
    IntegerCastClass();
    QString castBack(void* value) override;

protected:
    int parse(const QString& text, bool* ok) const override;
};

} // namespace main
} // namespace qel
