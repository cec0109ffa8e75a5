#include "kernel/gui/abstractcommandguiwidget.h"

namespace qel {
namespace gui {

AbstractCommandGuiWidget::AbstractCommandGuiWidget(QWidget* parent) : QWidget(parent)
{
}

AbstractCommandGuiWidget::~AbstractCommandGuiWidget() = default;

} // namespace gui
} // namespace qel
