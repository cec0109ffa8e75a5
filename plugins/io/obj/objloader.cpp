#include "plugins/io/obj/objloader.h"

namespace qel {
namespace io {
namespace plugins {

// OBJ has no signature; text without NUL bytes is all that can be asked.
bool ObjLoader::checkHead(const QByteArray& head) const
{
    return !head.contains('\0');
}

} // namespace plugins
} // namespace io
} // namespace qel
