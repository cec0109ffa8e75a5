#pragma once

#include "plugins/io/common/fileloader.h"

#include <QStringList>

namespace Assimp {
class Importer;
}

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
    // The loader for files of a type no plug-in registered: it reads what one of assimp's
    // importers recognises by the file's content and refuses the rest.
    static scene::Loader* createRecognisingContent();

    AssimpLoader();

protected:
    bool readFile(QFile& file) override;

private:
    class Progress;

    // Assimp's name of the importer that recognises the file's content; empty for none.
    static QString formatByContent(Assimp::Importer& importer, const QByteArray& path);
    bool readScene(Assimp::Importer& importer, const QByteArray& path);
    // Fails with the reason, telling as what the content was read when it was recognised.
    bool failAs(const QString& reason);

    bool recognisingContent;
    // The importer that recognised the file, for the messages.
    QString recognisedAs;
};

} // namespace plugins
} // namespace io
} // namespace qel
