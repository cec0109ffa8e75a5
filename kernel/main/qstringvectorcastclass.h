#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// Lists of texts "[a,b,...]"; elements stand as written, "[]" is the empty list.
class QStringVectorCastClass : public CastClass
{
public:
    QStringVectorCastClass();

    void* castString(const QString& text) override;
    bool isCastable(const QString& text) override;
    QString castBack(void* value) override;
    void doSpecialDeletion(void* value) override;
};

} // namespace main
} // namespace qel
