#include "plugins/io/readers/readmonitor.h"

#include <algorithm>

namespace qel {
namespace io {
namespace readers {

namespace {
// About two hundred reports per file, and none closer than 64 KiB apart.
const qint64 STEPS_PER_FILE = 200;
const qint64 MINIMUM_STEP = 64 * 1024;
} // namespace

ReadMonitor::ReadMonitor(qint64 total, const Callback& callback)
    : callback(callback), total(0), step(MINIMUM_STEP), nextReport(0), stopped(false)
{
    setTotal(total);
}

void ReadMonitor::setTotal(qint64 newTotal)
{
    total = std::max<qint64>(newTotal, 0);
    step = std::max(MINIMUM_STEP, total / STEPS_PER_FILE);
    nextReport = 0;
}

bool ReadMonitor::advance(qint64 done)
{
    if (stopped)
        return false;
    if (done < nextReport || callback.empty())
        return true;
    nextReport = done + step;
    if (!callback(std::min(done, total), total))
        stopped = true;
    return !stopped;
}

} // namespace readers
} // namespace io
} // namespace qel
