#include "projectbenchmark.h"

#include "benchoptions.h"
#include "benchreport.h"
#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scene.h"
#include "module_scene/scenevcgmodel.h"
#include "scenemodulesession.h"
#include "toruswriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

// A checksum of a mesh as an archive entry holds it: the live vertices' coordinates in
// order, then each live face's corners as numbers among the live vertices.
class MeshDigest
{
public:
    explicit MeshDigest(const qel::scene::CMeshO& mesh) : vertices(mesh.vn), faces(mesh.fn)
    {
        std::vector<std::uint32_t> numbers(mesh.vert.size(), 0);
        std::uint32_t next = 0;
        for (std::size_t v = 0; v < mesh.vert.size(); ++v) {
            if (mesh.vert[v].isDeleted())
                continue;
            numbers[v] = next++;
            add(mesh.vert[v].coord.data(), 3 * sizeof(double));
        }
        for (std::size_t f = 0; f < mesh.face.size(); ++f) {
            const qel::scene::CFaceO& face = mesh.face[f];
            if (face.isDeleted())
                continue;
            for (const qel::scene::CVertexO* corner : face.v) {
                const std::uint32_t number = numbers[static_cast<std::size_t>(corner - mesh.vert.data())];
                add(&number, sizeof(number));
            }
        }
    }

    bool operator==(const MeshDigest& other) const
    {
        return vertices == other.vertices && faces == other.faces && hash == other.hash;
    }

private:
    // FNV-1a, 64 bits.
    void add(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t index = 0; index < size; ++index)
            hash = (hash ^ bytes[index]) * 1099511628211ULL;
    }

    long long vertices;
    long long faces;
    std::uint64_t hash = 14695981039346656037ULL;
};

const char* const ModelName = "torus";

// The load benchmark's torus, through the PLY plug-in, as a model of the global scene.
bool addTorus(const QString& path, long long triangles)
{
    if (!TorusWriter(triangles).write(path, true)) {
        std::fprintf(stderr, "qel-bench: cannot write %s\n", qPrintable(path));
        return false;
    }
    std::unique_ptr<qel::io::scene::Loader> loader = SceneModuleSession::loaderFor(path);
    qel::scene::MeshModel* mesh = loader ? loader->loadMesh(path) : nullptr;
    QFile::remove(path);
    if (!mesh) {
        if (loader)
            std::fprintf(stderr, "qel-bench: %s\n", qPrintable(loader->getErrorMessage()));
        return false;
    }
    qel::scene::_GlobalScene()->addElement(new qel::scene::SceneVCGModel(mesh, ModelName));
    return true;
}

const qel::scene::SceneVCGModel* findTorus()
{
    const qel::scene::SceneElement::Pointer element = qel::scene::_GlobalScene()->getSceneElement(ModelName);
    return dynamic_cast<const qel::scene::SceneVCGModel*>(element.get());
}

bool sameMesh(const qel::scene::SceneVCGModel* model, const MeshDigest& saved)
{
    return model && model->getMeshModel() && MeshDigest(model->getMeshModel()->cm) == saved;
}

double writeFloor(const QString& path, const QByteArray& bytes)
{
    const auto start = std::chrono::steady_clock::now();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() || !file.flush()
        || ::fsync(file.handle()) != 0)
        return -1.0;
    file.close();
    return BenchOptions::secondsSince(start);
}

double readFloor(const QString& path, qint64 size)
{
    const auto start = std::chrono::steady_clock::now();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.readAll().size() != size)
        return -1.0;
    return BenchOptions::secondsSince(start);
}

} // namespace

int runProjectBenchmark(int argc, char** argv)
{
    BenchOptions options({{"triangles", "2000000"}, {"dir", QDir::tempPath()}});
    if (!options.parse(argc, argv) || options.number("triangles") < 8) {
        std::fprintf(stderr, "usage: qel-bench project [--triangles N] [--dir FOLDER] [--json FILE]\n");
        return 2;
    }
    const long long triangles = options.number("triangles");
    const QDir folder(options.text("dir"));
    const QString project = folder.filePath(QStringLiteral("qel-bench.qelproj"));
    const QString floorFile = folder.filePath(QStringLiteral("qel-bench.floor"));

    const SceneModuleSession module(argc, argv);
    if (!addTorus(folder.filePath(QStringLiteral("qel-bench-torus.ply")), triangles))
        return 1;
    const qel::scene::SceneVCGModel* model = findTorus();
    if (!model || !model->getMeshModel())
        return 1;
    const MeshDigest original(model->getMeshModel()->cm);
    const long long savedTriangles = model->getMeshModel()->cm.fn;

    qel::io::ProjectFile file(qel::io::ProjectManager::getInstance());
    bool abort = false;
    auto start = std::chrono::steady_clock::now();
    const bool saved = file.save(project, abort);
    const double saveSeconds = BenchOptions::secondsSince(start);
    const qint64 archiveBytes = QFileInfo(project).size();
    start = std::chrono::steady_clock::now();
    const bool opened = saved && file.open(project, abort);
    const double openSeconds = BenchOptions::secondsSince(start);
    if (!opened) {
        std::fprintf(stderr, "qel-bench project: %s\n", qPrintable(file.errorString()));
        return 1;
    }
    const qel::scene::SceneVCGModel* reopened = findTorus();
    const bool identical = sameMesh(reopened, original);

    const QByteArray floorBytes(int(archiveBytes), '\x5a');
    const double writeSeconds = writeFloor(floorFile, floorBytes);
    const double readSeconds = readFloor(floorFile, archiveBytes);
    QFile::remove(floorFile);
    QFile::remove(project);

    BenchReport report(QStringLiteral("project: one %1-triangle model saved and opened").arg(savedTriangles));
    report.add("triangles", double(savedTriangles));
    report.add("archive_bytes", double(archiveBytes), "B");
    report.add("save_s", saveSeconds, "s");
    report.add("write_floor_s", writeSeconds, "s");
    report.add("open_s", openSeconds, "s");
    report.add("read_floor_s", readSeconds, "s");
    report.add("identical", identical ? 1.0 : 0.0);
    report.print();
    BenchReport::printTarget("save at most 4 x the write floor",
                             writeSeconds > 0.0 && saveSeconds <= 4.0 * writeSeconds);
    BenchReport::printTarget("open at most 4 x the read floor", readSeconds > 0.0 && openSeconds <= 4.0 * readSeconds);
    std::fflush(stdout);
    if (!options.text("json").isEmpty() && !report.writeJson(options.text("json")))
        return 1;
    return identical && writeSeconds >= 0.0 && readSeconds >= 0.0 ? 0 : 1;
}
