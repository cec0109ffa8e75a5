#pragma once

#include "kernel/gui/parameterpanelfactory.h"

#include <QString>
#include <map>

namespace qel {
namespace main {

// A choice between named numbers; the argument is the number of the chosen name.
class ComboBoxParameterPanelFactory : public ParameterPanelFactory
{
public:
    explicit ComboBoxParameterPanelFactory(const std::map<QString, int>& values);

    ParameterPanel* createPanel(AbstractParameter* parameter) override;
    const std::map<QString, int>& getValues() const { return values; }

private:
    std::map<QString, int> values;
};

} // namespace main
} // namespace qel
