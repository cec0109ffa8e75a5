#include "kernel/gui/qcolorparameterpanelfactory.h"

#include "kernel/gui/qcolorparameterpanel.h"

namespace qel {
namespace main {

ParameterPanel* QColorParameterPanelFactory::createPanel(AbstractParameter* parameter)
{
    auto* panel = new QColorParameterPanel(parameter);
    registerPanel(panel);
    return panel;
}

} // namespace main
} // namespace qel
