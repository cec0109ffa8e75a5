#pragma once

#include "kernel/main/parameter.h"
#include "kernel/main/parameterset.h"
#include "kernel/main/typesolver.h"

#include <initializer_list>

namespace qel {
namespace commands {
namespace scene {

// A local parameter that execute reads a command's parameter into.
template <class T>
class LocalParameter : public main::Parameter<T>
{
public:
    LocalParameter() : main::Parameter<T>("noName", "noDesc", QString()) {}
    // Only valid after a successful solve.
    const T& operator*() const { return *this->getValue(); }
};

// Reads the first parameters of the set, in order, into the locals. False when the set
// is missing or shorter, or when any of them can't be read.
inline bool solveParameters(const main::TypeSolver& solver, const main::ParameterSet* set,
                            std::initializer_list<main::AbstractParameter*> locals)
{
    if (!set || set->size() < locals.size())
        return false;
    size_t index = 0;
    for (main::AbstractParameter* local : locals) {
        if (!solver.solve(local, set->getParameter(index++)))
            return false;
    }
    return true;
}

} // namespace scene
} // namespace commands
} // namespace qel
