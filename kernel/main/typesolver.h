#pragma once

namespace qel {
namespace main {

class AbstractParameter;

// Reads a command's parameter into a local parameter of the type execute wants.
class TypeSolver
{
public:
    // Same types: the target shares the source's value (copyValue). Other types: the
    // source's text is cast into the target. False when the source has no value, a
    // parameter is missing or the text doesn't cast.
    bool solve(AbstractParameter* target, AbstractParameter* source) const;
};

} // namespace main
} // namespace qel
