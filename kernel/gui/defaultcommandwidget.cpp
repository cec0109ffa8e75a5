#include "kernel/gui/defaultcommandwidget.h"

namespace qel {
namespace gui {

DefaultCommandWidget::DefaultCommandWidget(QWidget* parent) : QWidget(parent)
{
}

DefaultCommandWidget::~DefaultCommandWidget() = default;

} // namespace gui
} // namespace qel
