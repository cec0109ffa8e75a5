#include "kernel/main/parameterset.h"

namespace qel {
namespace main {

ParameterSet::ParameterSet(int id, const QString& name) : id(id), name(name), panelFactory(nullptr)
{
}

ParameterSet::ParameterSet(const ParameterSet& other) : id(other.id), name(other.name), panelFactory(other.panelFactory)
{
    copyParametersOf(other);
}

ParameterSet& ParameterSet::operator=(const ParameterSet& other)
{
    if (this == &other)
        return *this;
    deleteParameters();
    id = other.id;
    name = other.name;
    panelFactory = other.panelFactory;
    copyParametersOf(other);
    return *this;
}

ParameterSet::~ParameterSet()
{
    deleteParameters();
}

void ParameterSet::addParameter(AbstractParameter* parameter)
{
    if (parameter)
        parameters.push_back(parameter);
}

AbstractParameter* ParameterSet::getParameter(size_t index) const
{
    return index < parameters.size() ? parameters[index] : nullptr;
}

size_t ParameterSet::castableArgumentCount(const std::vector<QString>& arguments) const
{
    size_t index = 0;
    while (index < arguments.size() && index < parameters.size() && parameters[index]->isCastable(arguments[index]))
        ++index;
    return index;
}

bool ParameterSet::fits(const std::vector<QString>& arguments) const
{
    return arguments.size() == parameters.size() && castableArgumentCount(arguments) == arguments.size();
}

size_t ParameterSet::typedParameterCount() const
{
    size_t count = 0;
    for (const AbstractParameter* parameter : parameters) {
        if (parameter->getCastClass())
            ++count;
    }
    return count;
}

void ParameterSet::deleteValues()
{
    for (AbstractParameter* parameter : parameters)
        parameter->deleteValue();
}

void ParameterSet::copyParametersOf(const ParameterSet& other)
{
    for (const AbstractParameter* parameter : other.parameters)
        parameters.push_back(parameter->clone());
}

// A parameter's destructor leaves its value alone, so the set frees what its parameters own.
void ParameterSet::deleteParameters()
{
    deleteValues();
    for (AbstractParameter* parameter : parameters)
        delete parameter;
    parameters.clear();
}

} // namespace main
} // namespace qel
