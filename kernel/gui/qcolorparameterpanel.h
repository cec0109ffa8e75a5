#pragma once

#include "kernel/gui/parameterpanel.h"

namespace qel {
namespace gui {
class QColorFrame;
}

namespace main {

// A colour, shown in a colour field; the argument is the colour's "#rrggbb" name.
class QColorParameterPanel : public ParameterPanel
{
    Q_OBJECT

public:
    explicit QColorParameterPanel(AbstractParameter* parameter, QWidget* parent = nullptr);

    QString getText() const override;
    QWidget* getEditorWidget() override;
    void updateWidget() override;

private:
    qel::gui::QColorFrame* colorFrame;
};

} // namespace main
} // namespace qel
