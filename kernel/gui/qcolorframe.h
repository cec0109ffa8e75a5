#pragma once

#include <QColor>
#include <QFrame>

namespace qel {
namespace gui {

// A colour field: shows a colour, and a click lets the user pick a new one, which is
// announced with the user data given at construction.
class QColorFrame : public QFrame
{
    Q_OBJECT

public:
    explicit QColorFrame(const QColor& color = Qt::white, void* userData = nullptr, QWidget* parent = nullptr);

    const QColor& getColor() const { return color; }
    // Shows the colour without announcing it.
    void setColor(const QColor& newColor);
    void* getUserData() const { return userData; }
    void setUserData(void* data) { userData = data; }
    // Lets the colour dialog offer the alpha channel.
    void setAlphaEnabled(bool enabled) { alphaEnabled = enabled; }

    QSize sizeHint() const override;

public slots:
    // Opens the colour dialog; a chosen colour is shown and announced.
    void chooseColor();

signals:
    void colorSelected(QColor color, void* userData);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color;
    void* userData;
    bool alphaEnabled;
};

} // namespace gui
} // namespace qel
