#include "kernel/gui/parameterpanelfactory.h"

#include "kernel/gui/parameterpanel.h"

namespace qel {
namespace main {

ParameterPanelFactory::~ParameterPanelFactory() = default;

void ParameterPanelFactory::registerPanel(ParameterPanel* panel)
{
    panels.removeAll(QPointer<ParameterPanel>());
    if (panel)
        panels.append(panel);
}

void ParameterPanelFactory::updatePanels()
{
    const QList<QPointer<ParameterPanel>> current = panels;
    for (const QPointer<ParameterPanel>& panel : current) {
        if (panel)
            panel->updateWidget();
    }
}

int ParameterPanelFactory::countPanels() const
{
    int count = 0;
    for (const QPointer<ParameterPanel>& panel : panels) {
        if (panel)
            ++count;
    }
    return count;
}

} // namespace main
} // namespace qel
