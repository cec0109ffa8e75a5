#pragma once

#include <QWidget>

namespace qel {
namespace gui {

// A command's own widget, shown instead of the generic parameter window.
class DefaultCommandWidget : public QWidget
{
    Q_OBJECT
public:
    explicit DefaultCommandWidget(QWidget* parent = nullptr);
    ~DefaultCommandWidget() override;
};

} // namespace gui
} // namespace qel
