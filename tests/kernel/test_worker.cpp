#include "kernel/main/overseer.h"
#include "kernel/util/abstractdelegate.h"
#include "kernel/util/worker.h"
#include "kernel/util/workerdelegate.h"
#include "support/logcapture.h"
#include "support/otherthread.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using qel::main::Overseer;
using qel::util::Worker;
using qel::util::WorkerDelegate;

using qel::test::runOnOtherThread;

namespace {

struct Trace
{
    std::atomic<int> runs{0};
    std::atomic<int> deletions{0};
    std::atomic<QThread*> thread{nullptr};
};

class TracingWorker : public Worker
{
public:
    explicit TracingWorker(Trace* trace, bool throwing = false) : Worker(false), trace(trace), throwing(throwing) {}
    ~TracingWorker() override { ++trace->deletions; }

    int answer = 0;

protected:
    void run() override
    {
        trace->thread = QThread::currentThread();
        ++trace->runs;
        answer = 42;
        if (throwing)
            throw std::runtime_error("worker failed");
    }

private:
    Trace* trace;
    bool throwing;
};

class TracingDelegate : public qel::util::AbstractDelegate
{
public:
    explicit TracingDelegate(Trace* trace) : trace(trace) {}
    ~TracingDelegate() override { ++trace->deletions; }
    void invoke() override
    {
        trace->thread = QThread::currentThread();
        ++trace->runs;
    }

private:
    Trace* trace;
};

QThread* applicationThread()
{
    return QCoreApplication::instance()->thread();
}

} // namespace

TEST(Worker, OnTheApplicationThreadItRunsAtOnceAndWaitReturns)
{
    Trace trace;
    auto* waited = new TracingWorker(&trace);
    waited->setWait(true);
    Overseer::getInstance()->transmitWorker(waited);
    EXPECT_EQ(1, trace.runs.load());
    EXPECT_EQ(0, trace.deletions.load()); // kept for the wait
    waited->wait();
    EXPECT_EQ(1, trace.deletions.load());

    Trace unwatched;
    Overseer::getInstance()->transmitWorker(new TracingWorker(&unwatched));
    EXPECT_EQ(1, unwatched.runs.load());
    EXPECT_EQ(1, unwatched.deletions.load()); // deletes itself after its work

    Trace kept;
    auto* keptWorker = new TracingWorker(&kept);
    keptWorker->setWait(true);
    keptWorker->setDontDeleteMySelf(true);
    Overseer::getInstance()->transmitWorker(keptWorker);
    keptWorker->wait();
    EXPECT_EQ(42, keptWorker->answer);
    EXPECT_EQ(0, kept.deletions.load());
    delete keptWorker;
}

TEST(Worker, FromAnotherThreadItRunsOnTheApplicationThread)
{
    Trace waitedTrace;
    Trace keptTrace;
    int answer = 0;
    runOnOtherThread([&]() {
        auto* waited = new TracingWorker(&waitedTrace);
        waited->setWait(true);
        Overseer::getInstance()->transmitWorker(waited);
        waited->wait();

        auto* kept = new TracingWorker(&keptTrace);
        kept->setWait(true);
        kept->setDontDeleteMySelf(true);
        Overseer::getInstance()->transmitWorker(kept);
        kept->wait();
        answer = kept->answer;
        delete kept;
    });
    EXPECT_EQ(1, waitedTrace.runs.load());
    EXPECT_EQ(applicationThread(), waitedTrace.thread.load());
    EXPECT_EQ(1, waitedTrace.deletions.load());
    EXPECT_EQ(42, answer);
    EXPECT_EQ(applicationThread(), keptTrace.thread.load());
    EXPECT_EQ(1, keptTrace.deletions.load());
}

TEST(Worker, AWaitOnTheApplicationThreadRunsAQueuedWorkerOnce)
{
    Overseer::getInstance(); // made here: the thread below can't wait for it
    Trace trace;
    TracingWorker* worker = nullptr;
    QThread* thread = QThread::create([&]() {
        worker = new TracingWorker(&trace);
        worker->setWait(true);
        worker->setDontDeleteMySelf(true);
        Overseer::getInstance()->transmitWorker(worker); // queued, nobody serves the queue yet
    });
    thread->start();
    thread->wait();
    delete thread;
    ASSERT_NE(nullptr, worker);
    EXPECT_EQ(0, trace.runs.load());

    worker->wait(); // must not wait for the queue it is blocking
    EXPECT_EQ(1, trace.runs.load());
    delete worker;
    // The queued call finds the work done and the worker gone.
    QCoreApplication::processEvents();
    EXPECT_EQ(1, trace.runs.load());
    EXPECT_EQ(1, trace.deletions.load());
}

TEST(Worker, AnExceptionIsLoggedAndTheWorkerStillGoes)
{
    qel::test::LogCapture log;
    Trace trace;
    auto* worker = new TracingWorker(&trace, true);
    worker->setWait(true);
    Overseer::getInstance()->transmitWorker(worker);
    worker->wait();
    EXPECT_EQ(1, trace.deletions.load());
    EXPECT_EQ(1, log.count("worker failed", 1000));
}

TEST(WorkerDelegate, InvokeSyncFromAnotherThreadRunsThereAndReturnsWhenDone)
{
    Trace trace;
    int runsSeenByCaller = -1;
    runOnOtherThread([&]() {
        WorkerDelegate::invokeSync(new TracingDelegate(&trace));
        runsSeenByCaller = trace.runs.load();
    });
    EXPECT_EQ(1, runsSeenByCaller);
    EXPECT_EQ(applicationThread(), trace.thread.load());
    EXPECT_EQ(1, trace.deletions.load());

    Trace here;
    WorkerDelegate::invokeSync(new TracingDelegate(&here)); // on the application thread: at once
    EXPECT_EQ(1, here.runs.load());
    EXPECT_EQ(1, here.deletions.load());
}

TEST(WorkerDelegate, InvokeQueuesEvenOnTheApplicationThread)
{
    Trace trace;
    WorkerDelegate::invoke(new TracingDelegate(&trace));
    EXPECT_EQ(0, trace.runs.load());
    QCoreApplication::processEvents();
    EXPECT_EQ(1, trace.runs.load());
    EXPECT_EQ(1, trace.deletions.load());

    Trace fromThread;
    runOnOtherThread([&]() { WorkerDelegate::invoke(new TracingDelegate(&fromThread)); });
    QCoreApplication::processEvents();
    EXPECT_EQ(1, fromThread.runs.load());
    EXPECT_EQ(applicationThread(), fromThread.thread.load());
    EXPECT_EQ(1, fromThread.deletions.load());
}
