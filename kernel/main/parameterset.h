#pragma once

#include "kernel/main/abstractparameter.h"

#include <QString>
#include <deque>
#include <vector>

namespace qel {
namespace main {

class PanelFactory;

// One way of calling a command: an ordered list of parameters. The id, not the position
// in the command's list, tells execute which form was called. Owns its parameters;
// copies are deep. The panel factory is not owned.
class ParameterSet
{
public:
    ParameterSet(int id, const QString& name);
    ParameterSet(const ParameterSet& other);
    ParameterSet& operator=(const ParameterSet& other);
    virtual ~ParameterSet();

    // Takes over the parameter.
    void addParameter(AbstractParameter* parameter);
    std::deque<AbstractParameter*>* getParameterList() { return &parameters; }
    const std::deque<AbstractParameter*>* getParameterList() const { return &parameters; }
    size_t size() const { return parameters.size(); }
    // Null when out of range.
    AbstractParameter* getParameter(size_t index) const;

    int getID() const { return id; }
    const QString& getName() const { return name; }

    void setParameterSetPanelFactory(PanelFactory* factory) { panelFactory = factory; }
    PanelFactory* getParameterSetPanelFactory() const { return panelFactory; }

    // How many leading arguments the parameters in the same places can cast.
    size_t castableArgumentCount(const std::vector<QString>& arguments) const;
    // Whether the arguments fit this set in number and cast.
    bool fits(const std::vector<QString>& arguments) const;
    // Parameters with a cast class, that is, that take typed text rather than any text.
    size_t typedParameterCount() const;

    // Frees the values the parameters own.
    void deleteValues();

private:
    void copyParametersOf(const ParameterSet& other);
    void deleteParameters();

    int id;
    QString name;
    std::deque<AbstractParameter*> parameters;
    PanelFactory* panelFactory;
};

} // namespace main
} // namespace qel
