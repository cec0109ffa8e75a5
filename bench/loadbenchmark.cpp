#include "loadbenchmark.h"

#include "benchoptions.h"
#include "benchreport.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "module_scene/modulescenefactory.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QTemporaryDir>
#include <QtEndian>
#include <array>
#include <assimp/cimport.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>
#if defined(Q_OS_UNIX)
#include <unistd.h>
#endif

namespace {

const double PI = 3.14159265358979323846;

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

// The torus grid: rings x segments quads, two triangles each, every grid point shared by six
// triangles, so the load merges the STL's 3 corners per triangle down to rings x segments.
// As PLY, each grid point is written once.
class TorusWriter
{
public:
    explicit TorusWriter(long long wantedTriangles)
    {
        rings = static_cast<int>(std::ceil(std::sqrt(wantedTriangles / 2.0)));
        segments = static_cast<int>(wantedTriangles / (2LL * rings));
    }

    long long triangles() const { return 2LL * rings * segments; }
    long long gridPoints() const { return static_cast<long long>(rings) * segments; }

    long long fileSize(bool ply) const
    {
        return ply ? plyHeader().size() + 12 * gridPoints() + 13 * triangles() : 84 + 50 * triangles();
    }

    // Binary STL, every corner written out, or binary PLY, each grid point once.
    bool write(const QString& path, bool ply) const
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        if (ply)
            writePly(file);
        else
            writeStl(file);
        // On disk before anything is timed, so that no write-back runs beside the reads.
        file.flush();
#if defined(Q_OS_UNIX)
        ::fsync(file.handle());
#endif
        return file.error() == QFile::NoError;
    }

private:
    struct Point
    {
        float x, y, z;
    };

    // The two triangles of grid square (ring, segment), as grid point numbers.
    std::array<long long, 6> square(int ring, int segment) const
    {
        const int nextRing = (ring + 1) % rings;
        const int nextSegment = (segment + 1) % segments;
        auto number = [this](int r, int s) { return static_cast<long long>(r) * segments + s; };
        return {number(ring, segment), number(nextRing, segment), number(nextRing, nextSegment),
                number(ring, segment), number(nextRing, nextSegment), number(ring, nextSegment)};
    }

    Point pointNumbered(long long number) const
    {
        return point(static_cast<int>(number / segments), static_cast<int>(number % segments));
    }

    // Writes what fill appends, a few MB at a time.
    template<class Fill>
    static void writeChunked(QFile& file, long long count, Fill fill)
    {
        QByteArray chunk;
        for (long long item = 0; item < count; ++item) {
            fill(chunk, item);
            if (chunk.size() > (4 << 20)) {
                file.write(chunk);
                chunk.clear();
            }
        }
        file.write(chunk);
    }

    void writeStl(QFile& file) const
    {
        const QByteArray header = QByteArray("qel-bench torus").leftJustified(80, ' ');
        char count[4];
        qToLittleEndian<quint32>(static_cast<quint32>(triangles()), count);
        file.write(header);
        file.write(count, 4);
        writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
            const std::array<long long, 6> corners = square(static_cast<int>(number / segments),
                                                            static_cast<int>(number % segments));
            appendTriangle(chunk, pointNumbered(corners[0]), pointNumbered(corners[1]), pointNumbered(corners[2]));
            appendTriangle(chunk, pointNumbered(corners[3]), pointNumbered(corners[4]), pointNumbered(corners[5]));
        });
    }

    QByteArray plyHeader() const
    {
        return QStringLiteral("ply\nformat binary_little_endian 1.0\nelement vertex %1\nproperty float x\n"
                              "property float y\nproperty float z\nelement face %2\n"
                              "property list uchar int vertex_indices\nend_header\n")
            .arg(gridPoints())
            .arg(triangles())
            .toLatin1();
    }

    void writePly(QFile& file) const
    {
        file.write(plyHeader());
        writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
            const Point p = pointNumbered(number);
            for (float value : {p.x, p.y, p.z})
                appendFloat(chunk, value);
        });
        writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
            const std::array<long long, 6> corners = square(static_cast<int>(number / segments),
                                                            static_cast<int>(number % segments));
            for (int triangle = 0; triangle < 2; ++triangle) {
                chunk.append(char(3));
                for (int corner = 0; corner < 3; ++corner) {
                    char bytes[4];
                    qToLittleEndian<qint32>(static_cast<qint32>(corners[3 * triangle + corner]), bytes);
                    chunk.append(bytes, 4);
                }
            }
        });
    }

    Point point(int ring, int segment) const
    {
        const double major = 100.0;
        const double minor = 30.0;
        const double u = 2.0 * PI * ring / rings;
        const double v = 2.0 * PI * segment / segments;
        return {static_cast<float>((major + minor * std::cos(v)) * std::cos(u)),
                static_cast<float>((major + minor * std::cos(v)) * std::sin(u)), static_cast<float>(minor * std::sin(v))};
    }

    static void appendFloat(QByteArray& data, float value)
    {
        quint32 word;
        std::memcpy(&word, &value, 4);
        char bytes[4];
        qToLittleEndian<quint32>(word, bytes);
        data.append(bytes, 4);
    }

    // With its facet normal, which differs from triangle to triangle.
    static void appendTriangle(QByteArray& data, const Point& a, const Point& b, const Point& c)
    {
        const float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
        const float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
        float nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
        const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
        if (length > 0.0f) {
            nx /= length;
            ny /= length;
            nz /= length;
        }
        for (float value : {nx, ny, nz, a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z})
            appendFloat(data, value);
        data.append(2, '\0');
    }

    int rings;
    int segments;
};

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
    qel::io::scene::Importer* importer = qel::io::scene::Importer::getInstance();
    std::unique_ptr<qel::io::scene::Loader> loader(importer->getLoader(path));
    if (!loader) {
        std::fprintf(stderr, "qel-bench: no loader for the file; build the target qel_io_plugins\n");
        return figures;
    }
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

// The scene module, started as the host starts it (which loads the import plug-ins beside
// the executable) and taken down as the host takes it down.
class SceneModuleSession
{
public:
    SceneModuleSession() { qel::main::ModuleManager::getInstance()->addModule(getFactory()); }
    ~SceneModuleSession() { qel::main::Overseer::destroyInstance(); }
    SceneModuleSession(const SceneModuleSession&) = delete;
    SceneModuleSession& operator=(const SceneModuleSession&) = delete;
};

void printTarget(const char* text, bool met)
{
    std::printf("  target: %-44s %s\n", text, met ? "met" : "MISSED");
}

} // namespace

int runLoadBenchmark(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: qel-bench load [--triangles N] [--file PATH] [--format stl|ply] [--runs N] [--assimp 0|1] [--json FILE]\n");
        return 2;
    }
    // Meshes die through the host services, which need an application object.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QApplication> application;
    if (!QCoreApplication::instance())
        application.reset(new QApplication(argc, argv));
    const SceneModuleSession module;

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
    printTarget("load at most 6 x the read floor", load.seconds > 0.0 && load.seconds <= 6.0 * floor);
    if (options.assimp)
        printTarget("load at most a tenth of assimp", load.seconds > 0.0 && assimp.seconds >= 10.0 * load.seconds);
    printTarget("peak at most 400 MB per million triangles", peakPerMillion >= 0.0 && peakPerMillion <= 400e6);
    std::fflush(stdout);

    if (!options.json.isEmpty() && !report.writeJson(options.json))
        return 1;
    return load.seconds > 0.0 ? 0 : 1;
}
