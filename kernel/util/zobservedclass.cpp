#include "kernel/util/zobservedclass.h"
#include "kernel/util/zobserver.h"

#include <algorithm>

namespace qel {
namespace util {

ZObservedClass::ZObservedClass() = default;

// A copy starts without observers: they watch the original.
ZObservedClass::ZObservedClass(const ZObservedClass& other) : ZMemoryManaged<ZObservedClass>(other) {}

ZObservedClass& ZObservedClass::operator=(const ZObservedClass& other)
{
    ZMemoryManaged<ZObservedClass>::operator=(other);
    return *this;
}

ZObservedClass::~ZObservedClass() = default;

void ZObservedClass::attachObserver(ZObserver* observer)
{
    QMutexLocker locker(&observersMutex);
    if (std::find(observers.begin(), observers.end(), observer) == observers.end())
        observers.push_back(observer);
}

void ZObservedClass::detachObserver(ZObserver* observer)
{
    QMutexLocker locker(&observersMutex);
    observers.erase(std::remove(observers.begin(), observers.end(), observer), observers.end());
}

void ZObservedClass::informObservers(void* data)
{
    std::vector<ZObserver*> snapshot;
    {
        QMutexLocker locker(&observersMutex);
        snapshot = observers;
    }
    for (ZObserver* observer : snapshot) {
        if (isAttached(observer))
            observer->update(data, this);
    }
}

bool ZObservedClass::isAttached(ZObserver* observer)
{
    QMutexLocker locker(&observersMutex);
    return std::find(observers.begin(), observers.end(), observer) != observers.end();
}

} // namespace util
} // namespace qel
