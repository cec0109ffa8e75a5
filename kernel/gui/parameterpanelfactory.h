#pragma once

#include <QList>
#include <QPointer>

namespace qel {
namespace main {

class AbstractParameter;
class ParameterPanel;

// Makes the widget that edits a parameter in the parameter dialog, and keeps track of
// the panels it made so that they can be refreshed. Panels belong to their dialog.
class ParameterPanelFactory
{
public:
    ParameterPanelFactory() = default;
    virtual ~ParameterPanelFactory();

    virtual ParameterPanel* createPanel(AbstractParameter* parameter) = 0;

    // Makes every live panel of this factory re-read its source; application thread only.
    void updatePanels();
    int countPanels() const;

protected:
    void registerPanel(ParameterPanel* panel);

private:
    QList<QPointer<ParameterPanel>> panels;
};

} // namespace main
} // namespace qel
