#pragma once

class QWidget;

namespace qel {
namespace main {

class ParameterSet;

// Makes one widget for a whole parameter set, in place of a field per parameter. The
// widget writes what the user chooses into the set's parameters (castString); the
// parameter dialog then reads the arguments from them.
class PanelFactory
{
public:
    virtual ~PanelFactory() = default;
    virtual QWidget* createPanel(ParameterSet* set) = 0;
};

} // namespace main
} // namespace qel
