#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Single precision real numbers in the C locale.
class FloatCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;

private:
    static float parse(const QString& text, bool* ok);
};

} // namespace main
} // namespace qel
