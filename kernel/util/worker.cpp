#include "kernel/util/worker.h"

#include "kernel/log/logger.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QWaitCondition>
#include <exception>

namespace qel {
namespace util {

// Shared with queued invocations so that they can tell, without touching the worker,
// whether it still needs to run; the worker itself may be gone by then.
struct Worker::State
{
    QMutex mutex;
    QWaitCondition finishedCondition;
    bool claimed = false;
    bool finished = false;
};

namespace {

bool isApplicationThread()
{
    QCoreApplication* application = QCoreApplication::instance();
    return application && QThread::currentThread() == application->thread();
}

} // namespace

Worker::Worker(bool waitForIt) : state(std::make_shared<State>()), waitFlag(waitForIt), dontDeleteMySelf(false)
{
}

Worker::~Worker() = default;

void Worker::setWait(bool waitForIt)
{
    waitFlag = waitForIt;
}

void Worker::setDontDeleteMySelf(bool keep)
{
    dontDeleteMySelf = keep;
}

bool Worker::isWaitedFor() const
{
    return waitFlag;
}

bool Worker::isDeletedByCreator() const
{
    return dontDeleteMySelf;
}

bool Worker::hasRun() const
{
    QMutexLocker locker(&state->mutex);
    return state->finished;
}

bool Worker::claim(const std::shared_ptr<State>& state)
{
    QMutexLocker locker(&state->mutex);
    if (state->claimed)
        return false;
    state->claimed = true;
    return true;
}

void Worker::runNow()
{
    if (claim(state))
        runClaimed();
}

boost::function<void()> Worker::createInvocation()
{
    std::shared_ptr<State> shared = state;
    Worker* worker = this;
    return [shared, worker]() {
        if (claim(shared))
            worker->runClaimed();
    };
}

void Worker::runClaimed()
{
    try {
        run();
    } catch (const std::exception& exception) {
        qel::log::Logger::log(1000, "kernel/util/worker", 96, "qel::util::Worker::runClaimed", nullptr,
                              "Worker stopped by an exception: %s", exception.what());
    } catch (...) {
        qel::log::Logger::log(1000, "kernel/util/worker", 99, "qel::util::Worker::runClaimed", nullptr,
                              "Worker stopped by an unknown exception");
    }
    // Decide before waking the waiter: once woken it may delete this object.
    const bool deleteNow = !waitFlag && !dontDeleteMySelf;
    std::shared_ptr<State> keep = state;
    {
        QMutexLocker locker(&keep->mutex);
        keep->finished = true;
        keep->finishedCondition.wakeAll();
    }
    if (deleteNow)
        delete this;
}

void Worker::wait()
{
    if (isApplicationThread())
        runNow();
    {
        QMutexLocker locker(&state->mutex);
        while (!state->finished)
            state->finishedCondition.wait(&state->mutex);
    }
    if (waitFlag && !dontDeleteMySelf)
        delete this;
}

} // namespace util
} // namespace qel
