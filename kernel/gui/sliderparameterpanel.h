#pragma once

#include "kernel/gui/parameterpanel.h"

class QLabel;
class QSlider;

namespace qel {
namespace main {

// A number between a minimum and a maximum in fixed steps, on a slider with its value beside it.
class SliderParameterPanel : public ParameterPanel
{
    Q_OBJECT

public:
    SliderParameterPanel(AbstractParameter* parameter, float minimum, float maximum, float step,
                         QWidget* parent = nullptr);

    QString getText() const override;
    QWidget* getEditorWidget() override;
    void updateWidget() override;
    double getValue() const;

private:
    void showValue();
    int stepOf(double value) const;

    float minimum;
    float step;
    QSlider* slider;
    QLabel* valueLabel;
};

} // namespace main
} // namespace qel
