#pragma once

#include "kernel/util/zmemorymanaged.h"

namespace qel {
namespace util {

// Told by a ZObservedClass that it changed; the payload's meaning is the subject's.
class ZObserver : public ZMemoryManaged<ZObserver>
{
public:
    ~ZObserver() override = default;
    virtual void update(void* data, void* source) = 0;
};

} // namespace util
} // namespace qel
