#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Colours by name or "#rrggbb" / "#aarrggbb". Any non-empty text casts: an unknown name
// gives an invalid QColor, which the commands report themselves.
class QColorCastClass : public CastClass
{
public:
    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;
};

} // namespace main
} // namespace qel
