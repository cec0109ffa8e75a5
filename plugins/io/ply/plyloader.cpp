#include "plugins/io/ply/plyloader.h"

namespace qel {
namespace io {
namespace plugins {

scene::Loader* PlyLoader::create()
{
    return new PlyLoader;
}

bool PlyLoader::checkHead(const QByteArray& head) const
{
    return head.startsWith("ply");
}

} // namespace plugins
} // namespace io
} // namespace qel
