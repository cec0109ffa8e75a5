#pragma once

#include "kernel/util/abstractdelegate.h"

namespace qel {
namespace util {

template <class C>
class Delegate0 : public AbstractDelegate
{
public:
    typedef void (C::*Method)();

    Delegate0(C* object, Method method) : object(object), method(method) {}
    void invoke() override { (object->*method)(); }

private:
    C* object;
    Method method;
};

} // namespace util
} // namespace qel
