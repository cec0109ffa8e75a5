#pragma once

#include <QEventLoop>
#include <QObject>
#include <QThread>
#include <functional>

namespace qel {
namespace test {

// Runs the body on a thread of its own while the application thread serves its queue.
inline void runOnOtherThread(const std::function<void()>& body)
{
    QThread* thread = QThread::create(body);
    QEventLoop loop;
    QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
    delete thread;
}

} // namespace test
} // namespace qel
