#include "kernel/log/logger.h"

#include <QMutex>
#include <QMutexLocker>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <vector>

namespace qel {
namespace log {

namespace {

struct LoggerState
{
    QMutex mutex;
    std::map<int, Logger::Listener> listeners;
    int nextHandle = 1;
    std::atomic<unsigned int> stderrLevel{2000};
};

// Created on first use: static initialisers of modules log before main().
LoggerState& state()
{
    static LoggerState instance;
    return instance;
}

QString vformat(const char* format, va_list arguments)
{
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0)
        return QString::fromUtf8(format);
    std::vector<char> buffer(static_cast<size_t>(length) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    return QString::fromUtf8(buffer.data(), length);
}

} // namespace

void Logger::log(unsigned int level, const char* file, long line, const char* function, const char* category,
                 const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = format ? vformat(format, arguments) : QString();
    va_end(arguments);
    log(level, file, line, function, category, text);
}

void Logger::log(unsigned int level, const char* file, long line, const char* function, const char* category,
                 const QString& text)
{
    LogRecord record;
    record.level = level;
    record.file = QString::fromUtf8(file ? file : "");
    record.line = line;
    record.function = QString::fromUtf8(function ? function : "");
    record.category = QString::fromUtf8(category ? category : "");
    record.text = text;
    dispatch(record);
}

void Logger::dispatch(const LogRecord& record)
{
    LoggerState& s = state();
    std::vector<Listener> listeners;
    {
        QMutexLocker locker(&s.mutex);
        if (record.level <= s.stderrLevel.load()) {
            const QByteArray line = record.format().toUtf8();
            std::fprintf(stderr, "%s\n", line.constData());
            std::fflush(stderr);
        }
        for (const auto& entry : s.listeners)
            listeners.push_back(entry.second);
    }
    for (const Listener& listener : listeners)
        listener(record);
}

void Logger::setStderrLevel(unsigned int level)
{
    state().stderrLevel.store(level);
}

unsigned int Logger::getStderrLevel()
{
    return state().stderrLevel.load();
}

int Logger::addListener(const Listener& listener)
{
    LoggerState& s = state();
    QMutexLocker locker(&s.mutex);
    const int handle = s.nextHandle++;
    s.listeners[handle] = listener;
    return handle;
}

void Logger::removeListener(int handle)
{
    LoggerState& s = state();
    QMutexLocker locker(&s.mutex);
    s.listeners.erase(handle);
}

} // namespace log
} // namespace qel
