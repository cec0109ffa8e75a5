#include "plugins/io/ply/plyloader.h"

namespace qel {
namespace io {
namespace plugins {

bool PlyLoader::checkHead(const QByteArray& head) const
{
    return head.startsWith("ply");
}

// A binary file of triangles, as scanners write them, has its mesh storage made while its
// body is read; polygons give more triangles than face elements, and the storage is dropped.
void PlyLoader::configure(readers::PlyParser& parser)
{
    parser.setCountsListener([this](std::size_t vertices, std::size_t faces) {
        if (faces > 0)
            prepareStorage(faces, vertices);
    });
}

} // namespace plugins
} // namespace io
} // namespace qel
