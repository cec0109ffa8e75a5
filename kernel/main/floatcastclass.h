#pragma once

#include "kernel/main/numbercastclass.h"

namespace qel {
namespace main {

// Single precision real numbers in the C locale.
class FloatCastClass : public NumberCastClass<float>
{
public:
    FloatCastClass();
    QString castBack(void* value) override;

protected:
    float parse(const QString& text, bool* ok) const override;
};

} // namespace main
} // namespace qel
