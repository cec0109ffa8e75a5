#include "kernel/main/notifier.h"

#include "kernel/gui/parameterpanel.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

namespace qel {
namespace main {

Notifier::Notifier(QObject* parent) : QObject(parent)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!parent && application && thread() != application->thread())
        moveToThread(application->thread());
}

Notifier::~Notifier() = default;

void Notifier::notify()
{
    update();
}

void Notifier::update()
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread()) {
        updateOnApplicationThread();
        return;
    }
    // The notifier is the context: a refresh still queued when it goes is dropped.
    QMetaObject::invokeMethod(this, [this]() { updateOnApplicationThread(); }, Qt::QueuedConnection);
}

void Notifier::updateOnApplicationThread()
{
    ParameterPanel::updateAllPanels();
    emit updated();
}

} // namespace main
} // namespace qel
