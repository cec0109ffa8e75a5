#pragma once

#include "kernel/main/castclass.h"

namespace qel {
namespace main {

// A cast class for numbers of type T, read by one parse function: a text casts when it
// parses, and the error names what was expected.
template<class T>
class NumberCastClass : public CastClass
{
public:
    void* castString(const QString& text) override
    {
        bool ok = false;
        const T number = parse(text, &ok);
        if (!ok)
            throwNotCastable(text, expected, castFunction);
        return new T(number);
    }

    bool isCastable(const QString& text) override
    {
        bool ok = false;
        parse(text, &ok);
        return ok;
    }

protected:
    // `castFunction` is the name logged for a failed castString.
    NumberCastClass(const char* expected, const char* castFunction) : expected(expected), castFunction(castFunction) {}

    virtual T parse(const QString& text, bool* ok) const = 0;

private:
    const char* expected;
    const char* castFunction;
};

} // namespace main
} // namespace qel
