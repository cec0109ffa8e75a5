#pragma once

#include "kernel/util/abstractdelegate.h"

namespace qel {
namespace util {

// Runs delegates on the application thread. Both forms take over the delegate and
// delete it after the call.
class WorkerDelegate
{
public:
    // Queues the call and returns at once (also on the application thread).
    static void invoke(AbstractDelegate* delegate);
    // Runs the call on the application thread and returns when it is done; on that
    // thread it runs at once.
    static void invokeSync(AbstractDelegate* delegate);

private:
    WorkerDelegate() = delete;
    static void callAndDelete(AbstractDelegate* delegate);
};

} // namespace util
} // namespace qel
