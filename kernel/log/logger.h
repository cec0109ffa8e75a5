#pragma once

#include "kernel/log/logrecord.h"

#include <QString>
#include <boost/function.hpp>

namespace qel {
namespace log {

// The framework's log. Levels: 0 misuse, 1000 error, 2000 warning, 3000 information,
// 4000 debugging. Lines up to the stderr level go to stderr; every line goes to the
// listeners (the output console, tests).
class Logger
{
public:
    typedef boost::function<void(const LogRecord&)> Listener;

    static void log(unsigned int level, const char* file, long line, const char* function, const char* category,
                    const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 6, 7)))
#endif
        ;
    static void log(unsigned int level, const char* file, long line, const char* function, const char* category,
                    const QString& text);

    static void setStderrLevel(unsigned int level);
    static unsigned int getStderrLevel();

    // Returns a handle for removeListener.
    static int addListener(const Listener& listener);
    static void removeListener(int handle);

private:
    static void dispatch(const LogRecord& record);
};

} // namespace log
} // namespace qel
