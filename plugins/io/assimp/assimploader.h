#pragma once

#include "plugins/io/common/fileloader.h"

#include <QStringList>

namespace qel {
namespace io {
namespace plugins {

// Every format that assimp reads and the project has no reader of its own for. All meshes
// of the file's scene, placed by their nodes, become one mesh; lines and points are left out.
class AssimpLoader : public FileLoader
{
    Q_OBJECT

public:
    // Extensions (lower case, as assimp names them) with assimp's name of the importer,
    // without those that the project's own readers handle.
    static std::vector<std::pair<QString, QString>> supportedExtensions();

protected:
    bool readFile(QFile& file) override;

private:
    class Progress;
};

} // namespace plugins
} // namespace io
} // namespace qel
