#include "plugins/io/off/offloader.h"

#include <cctype>

namespace qel {
namespace io {
namespace plugins {

// The keyword may be missing; then the file starts with its counts (after comments).
bool OffLoader::checkHead(const QByteArray& head) const
{
    const QByteArray start = head.trimmed();
    return start.contains("OFF") || (!start.isEmpty() && (std::isdigit(static_cast<unsigned char>(start[0])) || start[0] == '#'));
}

} // namespace plugins
} // namespace io
} // namespace qel
