#include "module_scene/deferrediconengine.h"

#include <QPainter>

namespace qel {
namespace scene {

DeferredIconEngine::DeferredIconEngine(const QString& fileName) : fileName(fileName) {}

QIcon DeferredIconEngine::icon(const QString& fileName)
{
    return QIcon(new DeferredIconEngine(fileName));
}

void DeferredIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    loaded().paint(painter, rect, Qt::AlignCenter, mode, state);
}

QSize DeferredIconEngine::actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return loaded().actualSize(size, mode, state);
}

QPixmap DeferredIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    return loaded().pixmap(size, mode, state);
}

QList<QSize> DeferredIconEngine::availableSizes(QIcon::Mode mode, QIcon::State state) const
{
    return loaded().availableSizes(mode, state);
}

QString DeferredIconEngine::key() const
{
    return QStringLiteral("DeferredIconEngine");
}

QIconEngine* DeferredIconEngine::clone() const
{
    return new DeferredIconEngine(fileName);
}

void DeferredIconEngine::virtual_hook(int id, void* data)
{
    // The base answers the other hooks through the overrides above.
    if (id == IsNullHook)
        *static_cast<bool*>(data) = loaded().isNull();
    else
        QIconEngine::virtual_hook(id, data);
}

const QIcon& DeferredIconEngine::loaded() const
{
    if (!isLoaded) {
        loadedIcon = QIcon(fileName);
        isLoaded = true;
    }
    return loadedIcon;
}

} // namespace scene
} // namespace qel
