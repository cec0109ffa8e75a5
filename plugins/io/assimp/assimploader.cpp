#include "plugins/io/assimp/assimploader.h"

#include "kernel/log/logger.h"
#include "plugins/io/assimpscene/assimpscenecollector.h"
#include "plugins/io/readers/rawmesh.h"

#include <QFile>
#include <assimp/BaseImporter.h>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <set>

namespace qel {
namespace io {
namespace plugins {

namespace {

// Read by the project's own plug-ins: each extension has exactly one reader.
const char* const OWN_FORMATS[] = {"stl", "ply", "obj", "off"};

// Validation runs before the other steps and refuses the scenes that crash them (a light
// without its node aborts the flattening; a missing node makes it fault). Flattening
// places every mesh by its nodes.
const unsigned int READ_STEPS = aiProcess_ValidateDataStructure | aiProcess_Triangulate | aiProcess_PreTransformVertices;

bool isOwnFormat(const QString& extension)
{
    for (const char* own : OWN_FORMATS) {
        if (extension == QLatin1String(own))
            return true;
    }
    return false;
}

} // namespace

// Assimp reports its own progress in [0, 1]; the reading's share goes below 80.
class AssimpLoader::Progress : public Assimp::ProgressHandler
{
public:
    explicit Progress(AssimpLoader* loader) : loader(loader) {}

    bool Update(float percentage) override
    {
        const qint64 done = percentage < 0.0f ? 0 : static_cast<qint64>(std::min(percentage, 1.0f) * 1000.0f);
        return loader->reportReading(done, 1000);
    }

private:
    AssimpLoader* loader;
};

std::vector<std::pair<QString, QString>> AssimpLoader::supportedExtensions()
{
    std::vector<std::pair<QString, QString>> result;
    std::set<QString> seen;
    Assimp::Importer importer;
    for (std::size_t index = 0; index < importer.GetImporterCount(); ++index) {
        const aiImporterDesc* description = importer.GetImporterInfo(index);
        if (!description || !description->mFileExtensions)
            continue;
        const QStringList extensions =
            QString::fromLatin1(description->mFileExtensions).toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString& extension : extensions) {
            if (isOwnFormat(extension) || !seen.insert(extension).second)
                continue;
            result.emplace_back(extension, QString::fromLatin1(description->mName));
        }
    }
    return result;
}

scene::Loader* AssimpLoader::createRecognisingContent()
{
    auto* loader = new AssimpLoader;
    loader->recognisingContent = true;
    return loader;
}

AssimpLoader::AssimpLoader() : recognisingContent(false) {}

QString AssimpLoader::formatByContent(Assimp::Importer& importer, const QByteArray& path)
{
    for (std::size_t index = 0; index < importer.GetImporterCount(); ++index) {
        const Assimp::BaseImporter* candidate = importer.GetImporter(index);
        if (candidate && candidate->CanRead(path.constData(), importer.GetIOHandler(), true)) {
            const aiImporterDesc* description = importer.GetImporterInfo(index);
            return description && description->mName ? QString::fromLatin1(description->mName)
                                                     : QStringLiteral("importer %1").arg(index);
        }
    }
    return QString();
}

bool AssimpLoader::readFile(QFile& file)
{
    const QByteArray path = QFile::encodeName(file.fileName());
    file.close();
    Assimp::Importer importer;
    if (recognisingContent) {
        recognisedAs = formatByContent(importer, path);
        if (recognisedAs.isEmpty())
            return fail(tr("no reader knows its type: no plug-in reads its suffix and no importer recognises its content"));
        log::Logger::log(3000, "plugins/io/assimp/assimploader", __LINE__, "qel::io::plugins::AssimpLoader::readFile", nullptr,
                         tr("'%1' has a type no plug-in registered; its content is read as %2").arg(fileName, recognisedAs));
    }
    return readScene(importer, path);
}

bool AssimpLoader::readScene(Assimp::Importer& importer, const QByteArray& path)
{
    // The importer owns and deletes its progress handler.
    importer.SetProgressHandler(new Progress(this));
    const aiScene* imported = importer.ReadFile(path.constData(), READ_STEPS);
    if (aborted)
        return fail(tr("loading was aborted"));
    if (!imported)
        return failAs(tr("the importer refused the file (%1)").arg(QString::fromLocal8Bit(importer.GetErrorString())));
    readers::RawMesh raw;
    AssimpSceneCollector collector;
    if (!collector.collect(*imported, raw))
        return failAs(collector.getError());
    importer.FreeScene();
    return buildMesh(raw);
}

bool AssimpLoader::failAs(const QString& reason)
{
    if (recognisedAs.isEmpty())
        return fail(reason);
    return fail(tr("%1 (its content was read as %2)").arg(reason, recognisedAs));
}

} // namespace plugins
} // namespace io
} // namespace qel
