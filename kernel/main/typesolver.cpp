#include "kernel/main/typesolver.h"

#include "kernel/main/abstractparameter.h"

namespace qel {
namespace main {

bool TypeSolver::solve(AbstractParameter* target, AbstractParameter* source) const
{
    if (!target || !source || !source->hasValue())
        return false;
    if (target->getTypeInfo() == source->getTypeInfo()) {
        target->copyValue(source);
        return target->hasValue();
    }
    const QString text = source->toString();
    if (!target->isCastable(text))
        return false;
    return target->castString(text) && target->hasValue();
}

} // namespace main
} // namespace qel
