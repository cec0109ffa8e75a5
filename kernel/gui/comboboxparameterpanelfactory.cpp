#include "kernel/gui/comboboxparameterpanelfactory.h"

#include "kernel/gui/comboboxparameterpanel.h"

namespace qel {
namespace main {

ComboBoxParameterPanelFactory::ComboBoxParameterPanelFactory(const std::map<QString, int>& values) : values(values)
{
}

ParameterPanel* ComboBoxParameterPanelFactory::createPanel(AbstractParameter* parameter)
{
    auto* panel = new ComboBoxParameterPanel(parameter, &values);
    registerPanel(panel);
    return panel;
}

} // namespace main
} // namespace qel
