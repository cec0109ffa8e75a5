#pragma once

#include <exception>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>

namespace qel {
namespace util {

// Work that runs on a thread of its own beside the caller, for steps of a long computation
// that touch different data. get() waits for it and returns its result or throws what it
// threw; the destructor waits too. When the system grants no thread, the work runs right
// away on the caller's. The end of the thread is joined, so all it wrote is seen after get().
template<class Result>
class ConcurrentTask
{
public:
    template<class Work>
    explicit ConcurrentTask(const Work& work)
    {
        try {
            thread = std::thread([this, work] { run(work); });
        } catch (const std::system_error&) {
            run(work);
        }
    }

    ConcurrentTask(const ConcurrentTask&) = delete;
    ConcurrentTask& operator=(const ConcurrentTask&) = delete;

    ~ConcurrentTask() { wait(); }

    Result get()
    {
        wait();
        if (error)
            std::rethrow_exception(std::exchange(error, nullptr));
        if constexpr (!std::is_void_v<Result>)
            return std::move(*result);
    }

private:
    typedef std::conditional_t<std::is_void_v<Result>, bool, Result> Stored;

    template<class Work>
    void run(const Work& work)
    {
        try {
            if constexpr (std::is_void_v<Result>) {
                work();
                result.emplace(true);
            } else {
                result.emplace(work());
            }
        } catch (...) {
            error = std::current_exception();
        }
    }

    void wait()
    {
        if (thread.joinable())
            thread.join();
    }

    std::optional<Stored> result;
    std::exception_ptr error;
    std::thread thread;
};

} // namespace util
} // namespace qel
