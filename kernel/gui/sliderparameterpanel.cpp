#include "kernel/gui/sliderparameterpanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <cmath>

namespace qel {
namespace main {

SliderParameterPanel::SliderParameterPanel(AbstractParameter* parameter, float minimum, float maximum, float step,
                                           QWidget* parent)
    : ParameterPanel(parameter, parent),
      minimum(minimum),
      step(step > 0.0f ? step : 1.0f),
      slider(new QSlider(Qt::Horizontal, this)),
      valueLabel(new QLabel(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(slider, 1);
    layout->addWidget(valueLabel);
    slider->setRange(0, qMax(0, stepOf(maximum)));
    connect(slider, &QSlider::valueChanged, this, [this]() { showValue(); });
    updateWidget();
}

int SliderParameterPanel::stepOf(double value) const
{
    return int(std::lround((value - minimum) / step));
}

double SliderParameterPanel::getValue() const
{
    return minimum + double(slider->value()) * step;
}

QString SliderParameterPanel::getText() const
{
    return QString::number(getValue(), 'g', 6);
}

QWidget* SliderParameterPanel::getEditorWidget()
{
    return slider;
}

void SliderParameterPanel::showValue()
{
    valueLabel->setText(getText());
}

void SliderParameterPanel::updateWidget()
{
    bool isNumber = false;
    const double initial = getInitialText().toDouble(&isNumber);
    slider->setValue(isNumber ? stepOf(initial) : 0);
    showValue();
}

} // namespace main
} // namespace qel
