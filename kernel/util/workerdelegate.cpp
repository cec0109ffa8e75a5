#include "kernel/util/workerdelegate.h"

#include "kernel/log/logger.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>
#include <exception>

namespace qel {
namespace util {

void WorkerDelegate::callAndDelete(AbstractDelegate* delegate)
{
    try {
        delegate->invoke();
    } catch (const std::exception& exception) {
        qel::log::Logger::log(1000, "kernel/util/workerdelegate", 18, "qel::util::WorkerDelegate::callAndDelete",
                              nullptr, "Delegate stopped by an exception: %s", exception.what());
    } catch (...) {
        qel::log::Logger::log(1000, "kernel/util/workerdelegate", 21, "qel::util::WorkerDelegate::callAndDelete",
                              nullptr, "Delegate stopped by an unknown exception");
    }
    delete delegate;
}

void WorkerDelegate::invoke(AbstractDelegate* delegate)
{
    if (!delegate)
        return;
    QCoreApplication* application = QCoreApplication::instance();
    if (!application) {
        qel::log::Logger::log(0, "kernel/util/workerdelegate", 33, "qel::util::WorkerDelegate::invoke", nullptr,
                              "No application object: the delegate runs on the calling thread");
        callAndDelete(delegate);
        return;
    }
    QMetaObject::invokeMethod(application, [delegate]() { callAndDelete(delegate); }, Qt::QueuedConnection);
}

void WorkerDelegate::invokeSync(AbstractDelegate* delegate)
{
    if (!delegate)
        return;
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread()) {
        callAndDelete(delegate);
        return;
    }
    QMetaObject::invokeMethod(application, [delegate]() { callAndDelete(delegate); }, Qt::BlockingQueuedConnection);
}

} // namespace util
} // namespace qel
