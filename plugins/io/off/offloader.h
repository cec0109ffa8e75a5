#pragma once

#include "plugins/io/common/rawmeshloader.h"
#include "plugins/io/readers/offparser.h"

namespace qel {
namespace io {
namespace plugins {

// OFF files and their variants with normals and colours.
class OffLoader : public RawMeshLoader<readers::OffParser>
{
    Q_OBJECT

protected:
    bool checkHead(const QByteArray& head) const override;
};

} // namespace plugins
} // namespace io
} // namespace qel
