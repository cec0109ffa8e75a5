#include "kernel/gui/parameterpanel.h"

#include "kernel/main/abstractparameter.h"

#include <QPointer>
#include <QSet>

namespace qel {
namespace main {

namespace {

// Panels are created and destroyed on the application thread only: no lock needed.
QSet<ParameterPanel*>& livePanels()
{
    static QSet<ParameterPanel*> panels;
    return panels;
}

} // namespace

ParameterPanel::ParameterPanel(AbstractParameter* parameter, QWidget* parent) : QWidget(parent), parameter(parameter)
{
    livePanels().insert(this);
}

ParameterPanel::~ParameterPanel()
{
    livePanels().remove(this);
}

QWidget* ParameterPanel::getEditorWidget()
{
    return this;
}

bool ParameterPanel::confirmParameter()
{
    const QString text = getText();
    if (!parameter || !parameter->isCastable(text))
        return false;
    return parameter->castString(text);
}

void ParameterPanel::setParameter(AbstractParameter* newParameter)
{
    parameter = newParameter;
    updateWidget();
}

void ParameterPanel::updateWidget()
{
}

QString ParameterPanel::getInitialText() const
{
    if (!parameter)
        return QString();
    const QString defaultText = parameter->getDefaultText();
    return defaultText.isEmpty() && parameter->hasValue() ? parameter->toString() : defaultText;
}

void ParameterPanel::updateAllPanels()
{
    // A panel's update may delete other panels: work on guarded copies.
    QList<QPointer<ParameterPanel>> panels;
    for (ParameterPanel* panel : livePanels())
        panels.append(panel);
    for (const QPointer<ParameterPanel>& panel : panels) {
        if (panel)
            panel->updateWidget();
    }
}

} // namespace main
} // namespace qel
