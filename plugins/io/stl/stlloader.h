#pragma once

#include "plugins/io/common/fileloader.h"

namespace qel {
namespace io {
namespace plugins {

// Binary and ASCII STL. The triangles go straight into the mesh, three new vertices each;
// the cleaning then merges the shared corners.
class StlLoader : public FileLoader
{
    Q_OBJECT

public:
    static scene::Loader* create();

protected:
    bool readFile(QFile& file) override;
    bool checkHead(const QByteArray& head) const override;
};

} // namespace plugins
} // namespace io
} // namespace qel
