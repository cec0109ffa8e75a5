#include "kernel/gui/sliderparameterpanelfactory.h"

#include "kernel/gui/sliderparameterpanel.h"

namespace qel {
namespace main {

SliderParameterPanelFactory::SliderParameterPanelFactory(float minimum, float maximum, float step)
    : minimum(minimum), maximum(maximum), step(step)
{
}

ParameterPanel* SliderParameterPanelFactory::createPanel(AbstractParameter* parameter)
{
    auto* panel = new SliderParameterPanel(parameter, minimum, maximum, step);
    registerPanel(panel);
    return panel;
}

} // namespace main
} // namespace qel
