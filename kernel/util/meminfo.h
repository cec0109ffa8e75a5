#pragma once

#include <QString>

namespace qel {
namespace util {

class MemInfo
{
public:
    // Physical memory available to new work, in bytes; 0 when it can't be told.
    static unsigned long getAvailableMemory();

    // The same read from a text in the format of /proc/meminfo.
    static unsigned long parseAvailableMemory(const QString& meminfo);

private:
    MemInfo() = delete;
};

} // namespace util
} // namespace qel
