#pragma once

#include "plugins/io/common/fileloader.h"

namespace qel {
namespace io {
namespace plugins {

// Binary and ASCII STL. STL writes every corner of every triangle out in full; the corners
// are merged into shared vertices while reading, which spares the mesh five vertices in six
// on a closed surface and gives the same cleaned mesh as merging them afterwards.
class StlLoader : public FileLoader
{
    Q_OBJECT

public:
    using FileLoader::prepareStorage;

protected:
    bool readFile(QFile& file) override;
    bool checkHead(const QByteArray& head) const override;
};

} // namespace plugins
} // namespace io
} // namespace qel
