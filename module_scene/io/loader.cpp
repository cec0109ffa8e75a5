#include "module_scene/io/loader.h"

#include "kernel/log/logger.h"
#include "kernel/math/matrix.h"
#include "kernel/util/concurrenttask.h"
#include "module_scene/io/fastmeshcleaner.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/meshtopology.h"
#include "module_scene/mesh/meshtransform.h"
#include "module_scene/meshmodel.h"

#include <algorithm>

namespace qel {
namespace io {
namespace scene {

using qel::scene::CMeshO;
using qel::scene::MeshModel;

namespace {

const char* const LOG_FILE = "module_scene/io/loader";
const char* const PROCESS_FUNCTION = "qel::io::scene::Loader::processMesh";
// The percentages of the reading are those below the cleaning's first step.
const int READING_END = 79;

void enableAdjacencyArrays(qel::scene::FaceVector& faces)
{
    if (!faces.isFaceFaceEnabled())
        faces.enableFaceFace();
    if (!faces.isVertexFaceEnabled())
        faces.enableVertexFace();
}

QString number(double value)
{
    return QString::number(value, 'g', -1);
}

} // namespace

Loader::Loader() : QObject(nullptr), mesh(nullptr), aborted(false), lastReadingPercent(-1), mergedWhileReading(0) {}

Loader::~Loader() = default;

MeshModel* Loader::loadMesh(QString file)
{
    fileName = file;
    errorMessage.clear();
    lastReadingPercent = -1;
    mergedWhileReading = 0;
    if (loadMeshFile()) {
        MeshModel* result = mesh;
        mesh = nullptr;
        return result;
    }
    if (errorMessage.isEmpty())
        fail(tr("no mesh resulted"));
    mesh = nullptr;
    return nullptr;
}

Loader::Center Loader::getPreSetCenter()
{
    return preSetCenter;
}

void Loader::abortLoading()
{
    aborted = true;
}

void Loader::dumpMask(int) {}

bool Loader::fail(const QString& reason)
{
    errorMessage = tr("Could not load '%1': %2").arg(fileName, reason);
    log::Logger::log(aborted ? 2000 : 1000, LOG_FILE, 212, "qel::io::scene::Loader::loadMesh", nullptr, errorMessage);
    return false;
}

bool Loader::reportReading(qint64 done, qint64 total)
{
    if (aborted)
        return false;
    const int percent =
        total > 0 ? static_cast<int>(std::min<qint64>(done, total) * READING_END / total) : 0;
    if (percent != lastReadingPercent) {
        lastReadingPercent = percent;
        emit progressChanged(percent, tr("Reading file"));
    }
    return !aborted;
}

void Loader::logStep(long line, const QString& text)
{
    log::Logger::log(4000, LOG_FILE, line, PROCESS_FUNCTION, nullptr, text);
}

void Loader::step(int percent, const char* text)
{
    emit progressChanged(percent, tr(text));
}

void Loader::processMesh(int mask)
{
    CMeshO& cm = mesh->cm;
    const qint64 merged = static_cast<qint64>(mergedWhileReading);
    logStep(77, QStringLiteral("# Vertices: %1, # Faces: %2, # Triangles: %3").arg(cm.vn + merged).arg(cm.fn).arg(cm.fn));

    step(80, QT_TR_NOOP("Cleaning Mesh"));
    // The arrays of the topology are made on a second core meanwhile: on a large mesh their
    // fresh memory costs about as much as the cleaning. They are members of the face vector
    // apart from the faces, which are all that the cleaning works on.
    qel::util::ConcurrentTask<void> adjacencyArrays([&cm] { enableAdjacencyArrays(cm.face); });
    FastMeshCleaner cleaner(cm);
    const int duplicates = cleaner.removeDuplicateVertices();
    const int unreferenced = cleaner.removeUnreferencedVertices();
    logStep(85, QStringLiteral("Removed %1 duplicate and %2 unreferenced vertices").arg(duplicates + merged).arg(unreferenced));

    step(83, QT_TR_NOOP("Removing deleted vertices"));
    cleaner.compactVertices();
    cm.vert.resize(static_cast<std::size_t>(cm.vn));
    logStep(91, QStringLiteral("# Vertices after cleaning: %1/%2").arg(cm.vert.size()).arg(cm.vn));

    step(84, QT_TR_NOOP("Removing deleted faces"));
    adjacencyArrays.get();
    qel::scene::MeshAllocator::compactFaces(cm);
    logStep(96, QStringLiteral("# Faces after cleaning: %1/%2").arg(cm.face.size()).arg(cm.fn));

    // The topology depends on nothing but the corners of the faces, which no step from here
    // on changes. A second core builds the face-face links of the lower half of the vertices
    // and then the vertex-face lists while this one computes the normals and the box, and
    // builds the other half of the links at the topology step. The two sides write
    // different members, and different links.
    const std::size_t half = cm.vert.size() / 2;
    qel::util::ConcurrentTask<void> topology([&cm, half] {
        qel::scene::MeshTopology::buildFaceFace(cm, 0, half);
        qel::scene::MeshTopology::buildVertexFace(cm);
    });

    step(85, QT_TR_NOOP("Updating Normals"));
    logStep(100, QStringLiteral("Updating Normals"));
    if (mask & MeshModel::VERTEX_NORMAL)
        qel::scene::MeshNormals::updateFaceNormals(cm);
    else
        qel::scene::MeshNormals::updateVertexAndFaceNormals(cm);

    step(90, QT_TR_NOOP("Updating Bounding Box"));
    logStep(108, QStringLiteral("Updating Bounding Box"));
    qel::scene::MeshBounds::update(cm);
    const auto extent = cm.bbox.extent();
    logStep(111, QStringLiteral("Bounding Box (%1 x %2 x %3)").arg(number(extent[0]), number(extent[1]), number(extent[2])));

    const auto center = cm.bbox.center();
    preSetCenter = Center(static_cast<float>(center[0]), static_cast<float>(center[1]), static_cast<float>(center[2]));

    step(93, QT_TR_NOOP("Updating Topology"));
    logStep(118, QStringLiteral("Updating Topology"));
    qel::scene::MeshTopology::buildFaceFace(cm, half, cm.vert.size());
    topology.get();

    step(95, QT_TR_NOOP("Moving to center"));
    logStep(124, QStringLiteral("Moving to center (%1, %2, %3)").arg(number(center[0]), number(center[1]), number(center[2])));
    qel::scene::MeshTransform::apply(cm, math::Matrix<double, 4, 4>::translation(-center[0], -center[1], -center[2]));

    step(97, QT_TR_NOOP("Moving Bounding Box"));
    const auto boxCenter = cm.bbox.center();
    logStep(130, QStringLiteral("Moving Bounding Box (%1, %2, %3)")
                     .arg(number(boxCenter[0]), number(boxCenter[1]), number(boxCenter[2])));
    cm.bbox.min -= boxCenter;
    cm.bbox.max -= boxCenter;

    step(100, QT_TR_NOOP("Init. and uploading to graphics"));
}

} // namespace scene
} // namespace io
} // namespace qel
