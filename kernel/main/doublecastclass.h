#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Real numbers in the C locale; the text form is the shortest that reads back exactly.
class DoubleCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;

private:
    static double parse(const QString& text, bool* ok);
};

} // namespace main
} // namespace qel
