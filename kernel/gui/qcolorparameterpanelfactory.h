#pragma once

#include "kernel/gui/parameterpanelfactory.h"

namespace qel {
namespace main {

class QColorParameterPanelFactory : public ParameterPanelFactory
{
public:
    ParameterPanel* createPanel(AbstractParameter* parameter) override;
};

} // namespace main
} // namespace qel
