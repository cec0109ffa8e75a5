#include "kernel/gui/qcolorparameterpanel.h"

#include "kernel/gui/qcolorframe.h"

#include <QHBoxLayout>

namespace qel {
namespace main {

QColorParameterPanel::QColorParameterPanel(AbstractParameter* parameter, QWidget* parent)
    : ParameterPanel(parameter, parent), colorFrame(new qel::gui::QColorFrame(Qt::white, nullptr, this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(colorFrame);
    layout->addStretch();
    updateWidget();
}

QString QColorParameterPanel::getText() const
{
    return colorFrame->getColor().name();
}

QWidget* QColorParameterPanel::getEditorWidget()
{
    return colorFrame;
}

void QColorParameterPanel::updateWidget()
{
    const QColor initial(getInitialText());
    colorFrame->setColor(initial.isValid() ? initial : QColor(Qt::white));
}

} // namespace main
} // namespace qel
