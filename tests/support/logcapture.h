#pragma once

#include "kernel/log/logger.h"

#include <QMutex>
#include <QString>
#include <vector>

namespace qel {
namespace test {

// Records every log line while it lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<qel::log::LogRecord> records() const;
    // Lines whose text contains the given part, at the given level (any level if negative).
    int count(const QString& textPart, int level = -1) const;
    bool contains(const QString& textPart, int level = -1) const { return count(textPart, level) > 0; }
    // Lines with exactly these fields.
    int countExactly(unsigned int level, const QString& file, long line, const QString& function,
                     const QString& text) const;
    void clear();

private:
    int handle;
    mutable QMutex mutex;
    std::vector<qel::log::LogRecord> lines;
};

} // namespace test
} // namespace qel
