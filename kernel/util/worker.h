#pragma once

#include "kernel/util/zmemorymanaged.h"

#include <boost/function.hpp>
#include <memory>

namespace qel {
namespace util {

// A piece of work to be done on the application thread (see Overseer::transmitWorker).
// It carries its data in its own fields. Unless setWait or setDontDeleteMySelf is used
// it deletes itself once its work has run.
class Worker : public ZMemoryManaged<Worker>
{
public:
    explicit Worker(bool waitForIt = false);
    ~Worker() override;

    // The creator will call wait(); the worker then lives until that wait is over.
    void setWait(bool waitForIt);
    // The creator deletes the worker; it never deletes itself.
    void setDontDeleteMySelf(bool keep);
    bool isWaitedFor() const;
    bool isDeletedByCreator() const;

    // Blocks until the work has run. Called on the application thread it runs a work
    // that is still queued at once, so that it can't wait for itself.
    void wait();
    bool hasRun() const;

    // Runs the work here unless it has run or is running already. Used by the host's queue.
    void runNow();

    // A callable for a queue: it runs the work unless somebody else has started it, and it
    // stays safe to call after the worker was deleted by its creator.
    boost::function<void()> createInvocation();

protected:
    virtual void run() = 0;

private:
    struct State;

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    static bool claim(const std::shared_ptr<State>& state);
    void runClaimed();

    std::shared_ptr<State> state;
    bool waitFlag;
    bool dontDeleteMySelf;
};

} // namespace util
} // namespace qel
