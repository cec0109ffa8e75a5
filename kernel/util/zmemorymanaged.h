#pragma once

#include "kernel/util/zobject.h"
#include "kernel/log/logger.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <typeinfo>

namespace qel {
namespace util {

std::string demangledTypeName(const std::type_info& type);

// Intrusive, atomically counted base. A new object has count 0: nobody owns it
// until a ZPointer takes it or ref() is called. T names the family (CRTP).
template <class T>
class ZMemoryManaged : public ZObject
{
public:
    ZMemoryManaged() : refCount(0) {}

    // The count travels with a copy on purpose: a copy claims as many owners as its source.
    ZMemoryManaged(const ZMemoryManaged& other) : ZObject(other), refCount(other.refCount.load()) {}

    ZMemoryManaged& operator=(const ZMemoryManaged& other)
    {
        ZObject::operator=(other);
        refCount.store(other.refCount.load());
        return *this;
    }

    ~ZMemoryManaged() override
    {
        const int32_t count = refCount.load();
        if (count != 0) {
            const std::string function = "qel::util::ZMemoryManaged<class " + demangledTypeName(typeid(T))
                                         + ">::~ZMemoryManaged";
            qel::log::Logger::log(1000, "kernel/util/zmemorymanaged", 20, function.c_str(), nullptr,
                                  "Object %p is still referenced (%d) by a smart-pointer - a double-free "
                                  "corruption will occur!",
                                  static_cast<void*>(this), count);
        }
    }

    void ref() { refCount.fetch_add(1); }

    void unref()
    {
        if (refCount.fetch_sub(1) == 1)
            delete this;
    }

    int32_t getRefCount() const { return refCount.load(); }

private:
    std::atomic<int32_t> refCount;
};

} // namespace util
} // namespace qel
