#pragma once

namespace qel {
namespace util {

// A deferred call, handed to WorkerDelegate to run on the application thread.
class AbstractDelegate
{
public:
    virtual ~AbstractDelegate() = default;
    virtual void invoke() = 0;
};

} // namespace util
} // namespace qel
