#include "kernel/gui/qcolorframe.h"

#include <QColorDialog>
#include <QMouseEvent>
#include <QPainter>

namespace qel {
namespace gui {

QColorFrame::QColorFrame(const QColor& color, void* userData, QWidget* parent)
    : QFrame(parent), color(color), userData(userData), alphaEnabled(false)
{
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setCursor(Qt::PointingHandCursor);
    setToolTip(color.name());
}

void QColorFrame::setColor(const QColor& newColor)
{
    color = newColor;
    setToolTip(color.name());
    update();
}

QSize QColorFrame::sizeHint() const
{
    return QSize(40, 20);
}

void QColorFrame::chooseColor()
{
    const QColorDialog::ColorDialogOptions options =
        alphaEnabled ? QColorDialog::ShowAlphaChannel : QColorDialog::ColorDialogOptions();
    const QColor chosen = QColorDialog::getColor(color, this, QString(), options);
    if (!chosen.isValid())
        return;
    setColor(chosen);
    emit colorSelected(color, userData);
}

void QColorFrame::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        chooseColor();
    QFrame::mouseReleaseEvent(event);
}

void QColorFrame::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(contentsRect(), color);
    painter.end();
    QFrame::paintEvent(event);
}

} // namespace gui
} // namespace qel
