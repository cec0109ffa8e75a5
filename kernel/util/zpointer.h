#pragma once

#include "kernel/util/zobject.h"

#include <cstddef>
#include <utility>

namespace qel {
namespace util {

// Smart pointer for ZMemoryManaged objects; itself a polymorphic object.
template <class T>
class ZPointer : public ZObject
{
public:
    ZPointer() : pointer(nullptr) {}

    ZPointer(T* raw) : pointer(raw)
    {
        if (pointer)
            pointer->ref();
    }

    ZPointer(const ZPointer& other) : ZObject(other), pointer(other.pointer)
    {
        if (pointer)
            pointer->ref();
    }

    template <class U>
    ZPointer(const ZPointer<U>& other) : ZPointer(static_cast<T*>(other.get()))
    {
    }

    ~ZPointer() override
    {
        if (pointer)
            pointer->unref();
    }

    // The temporary takes its reference first and releases the old value last,
    // so self-assignment and assigning something only the old pointee keeps alive are safe.
    ZPointer& operator=(const ZPointer& other)
    {
        ZPointer temporary(other.pointer);
        std::swap(pointer, temporary.pointer);
        return *this;
    }

    ZPointer& operator=(T* raw)
    {
        ZPointer temporary(raw);
        std::swap(pointer, temporary.pointer);
        return *this;
    }

    T& operator*() const { return *pointer; }
    T* operator->() const { return pointer; }
    operator T*() const { return pointer; }
    T* get() const { return pointer; }

    bool operator==(const T* raw) const { return pointer == raw; }
    bool operator!=(const T* raw) const { return pointer != raw; }
    bool operator==(T* raw) const { return pointer == raw; }
    bool operator!=(T* raw) const { return pointer != raw; }
    bool operator==(std::nullptr_t) const { return pointer == nullptr; }
    bool operator!=(std::nullptr_t) const { return pointer != nullptr; }
    bool operator==(const ZPointer& other) const { return pointer == other.pointer; }
    bool operator!=(const ZPointer& other) const { return pointer != other.pointer; }
    bool isNull() const { return pointer == nullptr; }

private:
    T* pointer;
};

} // namespace util
} // namespace qel
