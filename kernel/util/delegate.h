#pragma once

#include "kernel/util/abstractdelegate.h"

namespace qel {
namespace util {

// Captures its argument at construction; invoke() passes that value, not a later one.
template <class C, class A>
class Delegate : public AbstractDelegate
{
public:
    typedef void (C::*Method)(A);

    Delegate(C* object, Method method, A argument) : object(object), method(method), argument(argument) {}
    void invoke() override { (object->*method)(argument); }

private:
    C* object;
    Method method;
    A argument;
};

} // namespace util
} // namespace qel
