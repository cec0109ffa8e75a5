#pragma once

#include <QString>

namespace qel {
namespace log {

// One line of the log, as handed to listeners.
struct LogRecord
{
    unsigned int level = 0;
    QString file;
    long line = 0;
    QString function;
    QString category;
    QString text;

    // "[1000] kernel/main/parameter:87 qel::main::Parameter<double>::castString: text"
    QString format() const;
};

} // namespace log
} // namespace qel
