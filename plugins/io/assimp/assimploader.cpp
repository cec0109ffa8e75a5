#include "plugins/io/assimp/assimploader.h"

#include "plugins/io/readers/rawmesh.h"

#include <QFile>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <set>

namespace qel {
namespace io {
namespace plugins {

namespace {

// Read by the project's own plug-ins: each extension has exactly one reader.
const char* const OWN_FORMATS[] = {"stl", "ply", "obj", "off"};

bool isOwnFormat(const QString& extension)
{
    for (const char* own : OWN_FORMATS) {
        if (extension == QLatin1String(own))
            return true;
    }
    return false;
}

std::uint8_t unitToByte(float value)
{
    const float scaled = std::round(value * 255.0f);
    if (!(scaled > 0.0f))
        return 0;
    return scaled >= 255.0f ? 255 : static_cast<std::uint8_t>(scaled);
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

bool AssimpLoader::readFile(QFile& file)
{
    const QByteArray path = QFile::encodeName(file.fileName());
    file.close();
    Assimp::Importer importer;
    // The importer owns and deletes its progress handler.
    importer.SetProgressHandler(new Progress(this));
    const aiScene* imported =
        importer.ReadFile(path.constData(), aiProcess_Triangulate | aiProcess_PreTransformVertices);
    if (aborted)
        return fail(tr("loading was aborted"));
    if (!imported)
        return fail(tr("the importer refused the file (%1)").arg(QString::fromLocal8Bit(importer.GetErrorString())));

    bool allColored = imported->mNumMeshes > 0;
    for (unsigned int m = 0; m < imported->mNumMeshes; ++m)
        allColored = allColored && imported->mMeshes[m]->HasVertexColors(0);

    readers::RawMesh raw;
    for (unsigned int m = 0; m < imported->mNumMeshes; ++m) {
        const aiMesh* part = imported->mMeshes[m];
        const std::uint32_t first = static_cast<std::uint32_t>(raw.vertexCount());
        for (unsigned int v = 0; v < part->mNumVertices; ++v) {
            const aiVector3D& point = part->mVertices[v];
            if (!std::isfinite(point.x) || !std::isfinite(point.y) || !std::isfinite(point.z))
                return fail(tr("vertex %1 has a coordinate that is not a finite number").arg(first + v + 1));
            raw.positions.insert(raw.positions.end(), {point.x, point.y, point.z});
            if (allColored) {
                const aiColor4D& color = part->mColors[0][v];
                raw.colors.insert(raw.colors.end(), {unitToByte(color.r), unitToByte(color.g), unitToByte(color.b),
                                                     unitToByte(color.a)});
            }
        }
        for (unsigned int f = 0; f < part->mNumFaces; ++f) {
            const aiFace& face = part->mFaces[f];
            if (face.mNumIndices != 3)
                continue;
            for (unsigned int corner = 0; corner < 3; ++corner) {
                if (face.mIndices[corner] >= part->mNumVertices)
                    return fail(tr("face %1 uses vertex index %2, but its mesh has %3 vertices")
                                    .arg(f + 1)
                                    .arg(face.mIndices[corner])
                                    .arg(part->mNumVertices));
                raw.faces.push_back(first + face.mIndices[corner]);
            }
        }
    }
    importer.FreeScene();
    return buildMesh(raw);
}

} // namespace plugins
} // namespace io
} // namespace qel
