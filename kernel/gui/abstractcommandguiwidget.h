#pragma once

#include <QWidget>

namespace qel {
namespace gui {

// Base of the windows in which a user fills in a command's parameters.
class AbstractCommandGuiWidget : public QWidget
{
    Q_OBJECT
public:
    explicit AbstractCommandGuiWidget(QWidget* parent = nullptr);
    ~AbstractCommandGuiWidget() override;
};

} // namespace gui
} // namespace qel
