#pragma once

#include "plugins/io/common/rawmeshloader.h"
#include "plugins/io/readers/plyparser.h"

namespace qel {
namespace io {
namespace plugins {

// ASCII and binary PLY with vertex normals and colours and face colours.
class PlyLoader : public RawMeshLoader<readers::PlyParser>
{
    Q_OBJECT

protected:
    bool checkHead(const QByteArray& head) const override;
    void configure(readers::PlyParser& parser) override;
};

} // namespace plugins
} // namespace io
} // namespace qel
