#pragma once

#include <future>
#include <system_error>

namespace qel {
namespace util {

// Work split over the cores of the machine: started on a thread of its own when the system
// grants one, otherwise run when its result is asked for. Either way the caller holds a
// future whose get() waits for the work and passes on what it threw.
class ConcurrentTask
{
public:
    template<class Work>
    static auto start(const Work& work) -> std::future<decltype(work())>
    {
        try {
            return std::async(std::launch::async, work);
        } catch (const std::system_error&) {
            return std::async(std::launch::deferred, work);
        }
    }

private:
    ConcurrentTask() = delete;
};

} // namespace util
} // namespace qel
