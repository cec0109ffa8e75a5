#pragma once

#include "kernel/gui/parameterpanelfactory.h"

namespace qel {
namespace main {

class SliderParameterPanelFactory : public ParameterPanelFactory
{
public:
    SliderParameterPanelFactory(float minimum, float maximum, float step);

    ParameterPanel* createPanel(AbstractParameter* parameter) override;

private:
    float minimum;
    float maximum;
    float step;
};

} // namespace main
} // namespace qel
