#pragma once

#include "kernel/main/numbercastclass.h"

namespace qel {
namespace main {

// Real numbers in the C locale; the text form is the shortest that reads back exactly.
class DoubleCastClass : public NumberCastClass<double>
{
public:
    DoubleCastClass();
    QString castBack(void* value) override;

protected:
    double parse(const QString& text, bool* ok) const override;
};

} // namespace main
} // namespace qel
