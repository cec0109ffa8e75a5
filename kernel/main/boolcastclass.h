#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Booleans are written 0 and 1.
class BoolCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;
};

} // namespace main
} // namespace qel
