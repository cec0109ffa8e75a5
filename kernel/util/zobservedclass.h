#pragma once

#include "kernel/util/zmemorymanaged.h"

#include <QMutex>
#include <vector>

namespace qel {
namespace util {

class ZObserver;

// Subject of the observer channel. Observers are called synchronously on the
// informing thread; the list is copied first so an observer may detach itself.
class ZObservedClass : public ZMemoryManaged<ZObservedClass>
{
public:
    ZObservedClass();
    ZObservedClass(const ZObservedClass& other);
    ZObservedClass& operator=(const ZObservedClass& other);
    ~ZObservedClass() override;

    virtual void attachObserver(ZObserver* observer);
    virtual void detachObserver(ZObserver* observer);
    virtual void informObservers(void* data);
    virtual bool isAttached(ZObserver* observer);

private:
    std::vector<ZObserver*> observers;
    mutable QMutex observersMutex;
};

} // namespace util
} // namespace qel
