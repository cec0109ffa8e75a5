#pragma once

#include <QIcon>
#include <QIconEngine>
#include <QString>

namespace qel {
namespace scene {

// An icon that reads its file at its first use. QIcon reads a file into pixmaps at once,
// and a pixmap made before the QGuiApplication aborts the process; the module's factory,
// with its icon, may be made by static initialisers at library load.
class DeferredIconEngine : public QIconEngine
{
public:
    explicit DeferredIconEngine(const QString& fileName);

    static QIcon icon(const QString& fileName);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) const override;
    QString key() const override;
    QIconEngine* clone() const override;
    void virtual_hook(int id, void* data) override;

private:
    const QIcon& loaded() const;

    QString fileName;
    mutable QIcon loadedIcon;
    mutable bool isLoaded = false;
};

} // namespace scene
} // namespace qel
