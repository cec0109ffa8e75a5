#pragma once

namespace qel {
namespace util {

// Root of the framework's class hierarchy: polymorphic, copyable, nothing more.
class ZObject
{
public:
    ZObject() = default;
    ZObject(const ZObject&) = default;
    ZObject& operator=(const ZObject&) = default;
    virtual ~ZObject() = default;
};

} // namespace util
} // namespace qel
