#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Whole numbers in base 10.
class IntegerCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;

private:
    static int parse(const QString& text, bool* ok);
};

} // namespace main
} // namespace qel
