#include "support/logcapture.h"

#include <QMutexLocker>

namespace qel {
namespace test {

LogCapture::LogCapture()
{
    handle = qel::log::Logger::addListener([this](const qel::log::LogRecord& record) {
        QMutexLocker locker(&mutex);
        lines.push_back(record);
    });
}

LogCapture::~LogCapture()
{
    qel::log::Logger::removeListener(handle);
}

std::vector<qel::log::LogRecord> LogCapture::records() const
{
    QMutexLocker locker(&mutex);
    return lines;
}

int LogCapture::count(const QString& textPart, int level) const
{
    QMutexLocker locker(&mutex);
    int found = 0;
    for (const auto& record : lines) {
        if ((level < 0 || record.level == static_cast<unsigned int>(level)) && record.text.contains(textPart))
            ++found;
    }
    return found;
}

int LogCapture::countExactly(unsigned int level, const QString& file, long line, const QString& function,
                             const QString& text) const
{
    QMutexLocker locker(&mutex);
    int found = 0;
    for (const auto& record : lines) {
        if (record.level == level && record.file == file && record.line == line && record.function == function
            && record.text == text)
            ++found;
    }
    return found;
}

void LogCapture::clear()
{
    QMutexLocker locker(&mutex);
    lines.clear();
}

} // namespace test
} // namespace qel
