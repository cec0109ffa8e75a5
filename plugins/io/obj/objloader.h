#pragma once

#include "plugins/io/common/rawmeshloader.h"
#include "plugins/io/readers/objparser.h"

namespace qel {
namespace io {
namespace plugins {

// The geometry of Wavefront OBJ files, with vertex colours where given.
class ObjLoader : public RawMeshLoader<readers::ObjParser>
{
    Q_OBJECT

protected:
    bool checkHead(const QByteArray& head) const override;
};

} // namespace plugins
} // namespace io
} // namespace qel
