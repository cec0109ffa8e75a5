#include "loadbenchmark.h"

#include "benchoptions.h"
#include "benchreport.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "scenemodulesession.h"
#include "toruswriter.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QTemporaryDir>
#include <assimp/cimport.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

struct Options
{
    long long triangles = 2000000;
    QString file;
    QString json;
    bool assimp = true;
    int runs = 3;
    QString format = "stl";
};

bool parseOptions(int argc, char** argv, Options& options)
{
    BenchOptions parsed({{"triangles", "2000000"}, {"file", ""}, {"assimp", "1"}, {"runs", "3"}, {"format", "stl"}});
    if (!parsed.parse(argc, argv))
        return false;
    options.triangles = parsed.number("triangles");
    options.file = parsed.text("file");
    options.json = parsed.text("json");
    options.assimp = parsed.number("assimp") != 0;
    options.runs = static_cast<int>(parsed.number("runs"));
    options.format = parsed.text("format");
    return options.triangles >= 8 && options.runs >= 1 && (options.format == "stl" || options.format == "ply");
}

// Resident and peak resident memory of this process; the peak can be reset (Linux 4.0 on).
long long statusBytes(const char* key)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(static_cast<int>(std::strlen(key))).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

bool resetPeakMemory()
{
    QFile clear("/proc/self/clear_refs");
    return clear.open(QIODevice::WriteOnly) && clear.write("5") == 1;
}

// One read of the whole file into fresh memory.
double readOnce(const QString& path)
{
    const auto start = std::chrono::steady_clock::now();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1.0;
    std::vector<char> contents(static_cast<std::size_t>(file.size()));
    if (file.read(contents.data(), file.size()) != file.size())
        return -1.0;
    return BenchOptions::secondsSince(start);
}

// The time spent from one progress value of a load to the next: the reading below 80,
// then the cleaning steps.
struct Stage
{
    int percent;
    double seconds;
};

struct LoadFigures
{
    double seconds = -1.0;
    long long vertices = -1;
    long long peakBytes = -1;
    std::vector<Stage> stages;
};

const char* stageName(int percent)
{
    switch (percent) {
    case 80: return "cleaning";
    case 83: return "vertex_compaction";
    case 84: return "face_compaction";
    case 85: return "normals";
    case 90: return "bounding_box";
    case 93: return "topology";
    case 95: return "centring";
    case 97: return "box_centring";
    case 100: return "finishing";
    default: return percent < 80 ? "reading" : "other";
    }
}

// Records when each stage of a load starts; the reading's many percent values are one stage.
class StageClock
{
public:
    explicit StageClock(std::chrono::steady_clock::time_point start) : stageStart(start), current(0) {}

    void enter(int percent)
    {
        if (percent < 80 || percent == current)
            return;
        close();
        current = percent;
    }

    std::vector<Stage> finish()
    {
        close();
        return stages;
    }

private:
    void close()
    {
        stages.push_back(Stage{current, BenchOptions::secondsSince(stageStart)});
        stageStart = std::chrono::steady_clock::now();
    }

    std::chrono::steady_clock::time_point stageStart;
    int current;
    std::vector<Stage> stages;
};

LoadFigures loadOnce(const QString& path)
{
    LoadFigures figures;
    std::unique_ptr<qel::io::scene::Loader> loader = SceneModuleSession::loaderFor(path);
    if (!loader)
        return figures;
    const long long residentBefore = statusBytes("VmRSS:");
    const bool peakReset = resetPeakMemory();
    const auto start = std::chrono::steady_clock::now();
    StageClock clock(start);
    QObject::connect(loader.get(), &qel::io::scene::Loader::progressChanged,
                     [&clock](int percent, const QString&) { clock.enter(percent); });
    std::unique_ptr<qel::scene::MeshModel> model(loader->loadMesh(path));
    figures.seconds = BenchOptions::secondsSince(start);
    figures.stages = clock.finish();
    if (peakReset && residentBefore >= 0)
        figures.peakBytes = statusBytes("VmHWM:") - residentBefore;
    if (!model) {
        std::fprintf(stderr, "qel-bench: %s\n", qPrintable(loader->getErrorMessage()));
        figures.seconds = -1.0;
        return figures;
    }
    figures.vertices = model->cm.vn;
    return figures;
}

struct PluginFigures
{
    double readFloor = -1.0;
    LoadFigures load;
    // The first read and load of the process, before the allocator has kept any memory.
    double firstRead = -1.0;
    double firstLoad = -1.0;
};

// Reads and loads taken in turns, so that both see the machine in the same state, and the
// best of each kept; the peak memory is that of the first load.
PluginFigures readAndLoad(const QString& path, int runs)
{
    PluginFigures best;
    for (int run = 0; run < runs; ++run) {
        const double read = readOnce(path);
        if (read > 0.0 && (best.readFloor < 0.0 || read < best.readFloor))
            best.readFloor = read;
        LoadFigures next = loadOnce(path);
        if (next.seconds <= 0.0)
            return best;
        if (run == 0) {
            best.firstRead = read;
            best.firstLoad = next.seconds;
            best.load = next;
        } else if (next.seconds < best.load.seconds) {
            next.peakBytes = best.load.peakBytes;
            best.load = next;
        }
    }
    return best;
}

// assimp is taken at run time, as the plug-in that uses it: qel-bench runs without it.
LoadFigures loadThroughAssimp(const QString& path)
{
    LoadFigures figures;
    QLibrary library("assimp", 5);
    auto importFile = reinterpret_cast<decltype(&aiImportFile)>(library.resolve("aiImportFile"));
    auto releaseImport = reinterpret_cast<decltype(&aiReleaseImport)>(library.resolve("aiReleaseImport"));
    if (!importFile || !releaseImport) {
        std::fprintf(stderr, "qel-bench: assimp not found (%s)\n", qPrintable(library.errorString()));
        return figures;
    }
    const QByteArray name = QFile::encodeName(path);
    const auto start = std::chrono::steady_clock::now();
    const aiScene* scene = importFile(name.constData(), aiProcess_JoinIdenticalVertices);
    figures.seconds = BenchOptions::secondsSince(start);
    if (!scene) {
        figures.seconds = -1.0;
        return figures;
    }
    figures.vertices = 0;
    for (unsigned int mesh = 0; mesh < scene->mNumMeshes; ++mesh)
        figures.vertices += scene->mMeshes[mesh]->mNumVertices;
    releaseImport(scene);
    return figures;
}

} // namespace

int runLoadBenchmark(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: qel-bench load [--triangles N] [--file PATH] [--format stl|ply] [--runs N] [--assimp 0|1] [--json FILE]\n");
        return 2;
    }
    const SceneModuleSession module(argc, argv);

    QTemporaryDir folder;
    const bool ply = options.format == "ply";
    const QString path = options.file.isEmpty() ? folder.filePath(ply ? "torus.ply" : "torus.stl") : options.file;
    const TorusWriter torus(options.triangles);
    // A file given by name that has the size of the asked torus is taken as it is.
    const bool reuse = !options.file.isEmpty() && QFileInfo(path).size() == torus.fileSize(ply);
    std::printf("%s %lld triangles (%lld grid points) %s %s\n", reuse ? "reading" : "writing", torus.triangles(),
                torus.gridPoints(), reuse ? "from" : "to", qPrintable(path));
    std::fflush(stdout);
    if (!reuse && !torus.write(path, ply)) {
        std::fprintf(stderr, "qel-bench: cannot write %s\n", qPrintable(path));
        return 1;
    }

    const PluginFigures plugin = readAndLoad(path, options.runs);
    const double floor = plugin.readFloor;
    const LoadFigures& load = plugin.load;
    const LoadFigures assimp = options.assimp ? loadThroughAssimp(path) : LoadFigures();
    const double millions = torus.triangles() / 1e6;
    const double peakPerMillion = load.peakBytes >= 0 ? load.peakBytes / millions : -1.0;

    BenchReport report(QStringLiteral("load: binary %1, %2 triangles").arg(ply ? "PLY" : "STL").arg(torus.triangles()));
    report.add("triangles", static_cast<double>(torus.triangles()));
    report.add("read_floor_s", floor, "s");
    report.add("load_s", load.seconds, "s");
    report.add("assimp_s", assimp.seconds, "s");
    report.add("peak_bytes_per_mtri", peakPerMillion, "bytes");
    report.add("first_read_s", plugin.firstRead, "s");
    report.add("first_load_s", plugin.firstLoad, "s");
    report.add("load_vertices", static_cast<double>(load.vertices));
    report.add("assimp_vertices", static_cast<double>(assimp.vertices));
    for (const Stage& stage : load.stages)
        report.add(QStringLiteral("stage_%1_s").arg(stageName(stage.percent)), stage.seconds, "s");
    report.add("load_over_read_floor", floor > 0.0 ? load.seconds / floor : -1.0, "x");
    report.add("assimp_over_load", load.seconds > 0.0 ? assimp.seconds / load.seconds : -1.0, "x");
    report.print();
    BenchReport::printTarget("load at most 6 x the read floor", load.seconds > 0.0 && load.seconds <= 6.0 * floor);
    if (options.assimp)
        BenchReport::printTarget("load at most a tenth of assimp", load.seconds > 0.0 && assimp.seconds >= 10.0 * load.seconds);
    BenchReport::printTarget("peak at most 400 MB per million triangles", peakPerMillion >= 0.0 && peakPerMillion <= 400e6);
    std::fflush(stdout);

    if (!options.json.isEmpty() && !report.writeJson(options.json))
        return 1;
    return load.seconds > 0.0 ? 0 : 1;
}
