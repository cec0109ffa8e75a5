#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Non-negative whole numbers in base 10.
class UnsignedIntegerCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;

private:
    static unsigned int parse(const QString& text, bool* ok);
};

} // namespace main
} // namespace qel
