#include "module_scene/scenevcgmodel.h"

#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"
#include "kernel/log/logger.h"
#include "kernel/main/outputconsole.h"
#include "kernel/main/overseer.h"
#include "kernel/util/exception.h"
#include "kernel/util/md5.h"
#include "kernel/util/meminfo.h"
#include "module_scene/glmaterial.h"
#include "module_scene/mesh/meshbvh.h"
#include "module_scene/mesh/meshcrossingblocks.h"
#include "module_scene/mesh/meshrenderer.h"
#include "module_scene/mesh/meshtopology.h"
#include "module_scene/mesh/modelentry.h"
#include "module_scene/meshmodel.h"
#include "module_scene/sceneelementfactory.h"

#include <QMutexLocker>
#include <QWidget>
#include <QReadLocker>
#include <QTemporaryFile>
#include <QWriteLocker>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <qopengl.h>

namespace qel {
namespace scene {

const QString SceneVCGModel::TypeName = QStringLiteral("SceneVCGModel");

namespace {

typedef SceneVCGModel::Point Point;
typedef math::NumericTraits<double> Traits;

const char* const LogFile = "module_scene/scenevcgmodel";

} // namespace

struct SceneVCGModel::PickIndex
{
    explicit PickIndex(const CMeshO& mesh) : tree(mesh), crossings(mesh) {}

    MeshBVH tree;
    MeshCrossingBlocks crossings;
};

namespace {

const SceneElementFactory::Register registration(SceneVCGModel::TypeName, &SceneVCGModel::createElement);

// The 12 triangles of a box, as corner indices, in the order the pick tests them.
const int BoxTriangles[12][3] = {{0, 1, 2}, {2, 3, 0}, {7, 6, 5}, {5, 4, 7}, {0, 4, 5}, {5, 1, 0},
                                 {1, 5, 6}, {6, 2, 1}, {2, 6, 7}, {7, 3, 2}, {3, 7, 4}, {4, 0, 3}};

// A point through a homogeneous matrix, divided by the resulting w unless it is 0.
Point transformed(const SceneElement::Matrix4& m, const Point& p)
{
    Point result(m(0, 0) * p[0] + m(0, 1) * p[1] + m(0, 2) * p[2] + m(0, 3),
                 m(1, 0) * p[0] + m(1, 1) * p[1] + m(1, 2) * p[2] + m(1, 3),
                 m(2, 0) * p[0] + m(2, 1) * p[1] + m(2, 2) * p[2] + m(2, 3));
    const double w = m(3, 0) * p[0] + m(3, 1) * p[1] + m(3, 2) * p[2] + m(3, 3);
    if (w != 0.0) {
        for (int i = 0; i < 3; ++i)
            result[i] /= w;
    }
    return result;
}

Point cornerOf(const SceneElement::Box& box, int corner)
{
    return Point(box.corners[corner].x(), box.corners[corner].y(), box.corners[corner].z());
}

// The one triangle test of both pick paths, so that they agree bit for bit.
bool testFace(const SceneElement::Matrix4& complete, const CFaceO& face, const SceneVCGModel::Line& line,
              Point corners[3], Point& hit, double& t)
{
    for (int corner = 0; corner < 3; ++corner)
        corners[corner] = transformed(complete, face.v[corner]->coord);
    return SceneVCGModel::intersectTriangle(corners[0], corners[1], corners[2], line, hit, t);
}

// Of the corners, in order, the one strictly nearest to the point replaces it.
void snapToNearestCorner(const Point corners[3], Point& point)
{
    double nearest = std::numeric_limits<double>::max();
    const Point hit = point;
    for (int corner = 0; corner < 3; ++corner) {
        const double cornerDistance = (corners[corner] - hit).length();
        if (cornerDistance < nearest) {
            nearest = cornerDistance;
            point = corners[corner];
        }
    }
}

double largestMagnitude(const Point& point)
{
    return std::max(std::abs(point[0]), std::max(std::abs(point[1]), std::abs(point[2])));
}

bool isFinitePoint(const Point& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

// Maximum row sum of the upper 3 x 3 block.
double linearNorm(const SceneElement::Matrix4& m)
{
    double norm = 0.0;
    for (int row = 0; row < 3; ++row)
        norm = std::max(norm, std::abs(m(row, 0)) + std::abs(m(row, 1)) + std::abs(m(row, 2)));
    return norm;
}

Point affineTransformed(const SceneElement::Matrix4& m, const Point& p)
{
    return Point(m(0, 0) * p[0] + m(0, 1) * p[1] + m(0, 2) * p[2] + m(0, 3),
                 m(1, 0) * p[0] + m(1, 1) * p[1] + m(1, 2) * p[2] + m(1, 3),
                 m(2, 0) * p[0] + m(2, 1) * p[1] + m(2, 2) * p[2] + m(2, 3));
}

// A pick ray in the mesh's own frame. The margin by which the tree's boxes grow covers the
// rounding between that frame and the world frame in which the faces are tested, with a
// wide berth: a face the world test hits is never left out of the search.
struct LocalRay
{
    Point origin;
    Point direction;
    double margin = 0.0;
};

// False where the tree can't be searched exactly: a projective or singular matrix, or a
// ray that isn't finite or has no direction.
bool toLocalRay(const SceneElement::Matrix4& complete, const SceneVCGModel::Line& line, const MeshBVH& tree,
                LocalRay& ray)
{
    if (complete(3, 0) != 0.0 || complete(3, 1) != 0.0 || complete(3, 2) != 0.0 || complete(3, 3) != 1.0)
        return false;
    SceneElement::Matrix4 inverse;
    try {
        inverse = complete.getInverse();
    } catch (const qel::Exception&) {
        return false;
    }
    ray.origin = affineTransformed(inverse, line.start);
    const Point end = affineTransformed(inverse, line.end);
    ray.direction = end - ray.origin;
    if (!isFinitePoint(ray.origin) || !isFinitePoint(end) || !isFinitePoint(ray.direction)
        || largestMagnitude(ray.direction) == 0.0)
        return false;
    const double localScale = std::max(std::max(largestMagnitude(tree.getLower()), largestMagnitude(tree.getUpper())),
                                       std::max(largestMagnitude(ray.origin), largestMagnitude(end)));
    const Point translation(complete(0, 3), complete(1, 3), complete(2, 3));
    const double worldScale = std::max(largestMagnitude(translation),
                                       std::max(largestMagnitude(line.start), largestMagnitude(line.end)));
    const double inverseNorm = linearNorm(inverse);
    ray.margin = 1e-8 * (linearNorm(complete) * inverseNorm * localScale + inverseNorm * worldScale);
    return std::isfinite(ray.margin);
}

// Whether the point lies on the inner side of the edge u-v (or on it).
bool insideOfEdge(const Point& u, const Point& v, const Point& hit, const Point& normal)
{
    return (v - u).cross(hit - u).dot(normal) >= 0.0;
}

double edgeLength(const CVertexO* from, const CVertexO* to)
{
    return (to->coord - from->coord).length();
}

Point barycenter(const CFaceO& face)
{
    const Point sum = face.v[0]->coord + face.v[1]->coord + face.v[2]->coord;
    return Point(sum.x() / 3.0, sum.y() / 3.0, sum.z() / 3.0);
}

void glColorOf(const QColor& color, float alpha)
{
    glColor4f(static_cast<float>(color.redF()), static_cast<float>(color.greenF()), static_cast<float>(color.blueF()),
              alpha);
}

void glMaterialOf(GLenum parameter, const QColor& color, float alpha)
{
    const GLfloat values[4] = {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                               static_cast<float>(color.blueF()), alpha};
    glMaterialfv(GL_FRONT, parameter, values);
}

void writeColor(QXmlStreamWriter* writer, const QString& tag, const QColor& color)
{
    writer->writeStartElement(tag);
    writer->writeAttribute("r", QString::number(color.red()));
    writer->writeAttribute("g", QString::number(color.green()));
    writer->writeAttribute("b", QString::number(color.blue()));
    writer->writeEndElement();
}

void readColor(QXmlStreamReader* reader, QColor& color)
{
    const QXmlStreamAttributes attributes = reader->attributes();
    color.setRgb(attributes.value("r").toInt(), attributes.value("g").toInt(), attributes.value("b").toInt(), 255);
}

} // namespace

SceneVCGModel::SceneVCGModel(MeshModel* mesh, const QString& name) : SceneElement(name), meshModel(mesh)
{
    m_hasScalingFactor = true;
    m_hasCustomGUI = true;
    m_isSerializable = true;
    m_isIntersectable = true;
    m_isOriginChangeable = true;
    if (meshModel) {
        meshModel->drawMode = MeshRenderer::DRAW_SMOOTH;
        initMeshModel();
    }
}

// A widget may still refer to the mesh: it goes at the next turn of the event loop.
SceneVCGModel::~SceneVCGModel()
{
    if (m_customGUI)
        m_customGUI->deleteLater();
    delete meshModel;
}

SceneElement* SceneVCGModel::createElement()
{
    return new SceneVCGModel(nullptr, QString());
}

QString SceneVCGModel::getTypeName() const
{
    return TypeName;
}

void SceneVCGModel::initMeshModel()
{
    meshModel->glw->addHints(MeshRenderer::HINT_USE_DISPLAY_LIST | MeshRenderer::HINT_CALLER_NORMALS);

    const Box3d& bbox = meshModel->cm.bbox;
    Box box;
    for (int axis = 0; axis < 3; ++axis) {
        box.size[axis] = bbox.max[axis] - bbox.min[axis];
        box.center[axis] = bbox.min[axis] + box.size[axis] * 0.5;
    }
    box.center.w() = Traits::One;
    box.size.w() = Traits::Zero;
    box.updateCorners();
    // A box read from a project stays.
    if (getBoundingBox(false).center.w() == Traits::Zero)
        getBoundingBox(false) = box;

    Box scaled = getBoundingBox(false);
    for (int axis = 0; axis < 3; ++axis)
        scaled.size[axis] = math::snap(scaled.size[axis] * m_scalingFactor);
    scaled.updateCorners();
    getBoundingBox(true) = scaled;
    m_hasBoundingBox = true;

    for (CVertexO& vertex : meshModel->cm.vert)
        vertex.owner = this;
    meshChanged();
}

// ---------------------------------------------------------------------------------------
// Project XML

void SceneVCGModel::saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort)
{
    SceneElement::saveTo(writer, tar, abort);
    writer->writeTextElement("drawmode", QString::number(meshModel ? meshModel->drawMode : pendingDrawMode));
    writer->writeTextElement("wireframe", QString::number(settings.wireframe ? 1 : 0));
    writeColor(writer, "modelColor", settings.modelColor);
    writeColor(writer, "clippingColor", settings.clippingColor);
    writeColor(writer, "ambientColor", settings.ambientColor);
    writeColor(writer, "diffuseColor", settings.diffuseColor);
    writeColor(writer, "specularColor", settings.specularColor);
    writer->writeTextElement("shininess", QString::number(settings.shininess, 'g', 6));
    writer->writeTextElement("advancedColoring", QString::number(settings.advancedColoring ? 1 : 0));
    writer->writeStartElement("preSetCenter");
    writer->writeAttribute("x", QString::number(preSetCenter.x(), 'g', 6));
    writer->writeAttribute("y", QString::number(preSetCenter.y(), 'g', 6));
    writer->writeAttribute("z", QString::number(preSetCenter.z(), 'g', 6));
    writer->writeEndElement();
    saveMesh(writer, tar, abort);
}

QString SceneVCGModel::getArchiveEntryName() const
{
    return QStringLiteral("models/") + util::MD5::calc(m_name) + QStringLiteral(".qelmodel");
}

// Without an archive or a temporary file the XML names no entry; an abort leaves the entry
// out of the archive although the XML names it.
void SceneVCGModel::saveMesh(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort)
{
    const char* const function = "qel::scene::SceneVCGModel::saveTo";
    if (!tar)
        return;
    const QString entry = getArchiveEntryName();
    QTemporaryFile file;
    if (!file.open()) {
        log::Logger::log(2000, LogFile, 1125, function, nullptr, "Counldn't open temporay file %s",
                         qPrintable(file.fileName()));
        return;
    }
    writer->writeTextElement("filename", entry);
    const CMeshO empty;
    QString reason;
    if (!ModelEntry::write(meshModel ? meshModel->cm : empty, &file, abort, reason)) {
        if (!reason.isEmpty())
            log::Logger::log(1000, LogFile, 1136, function, nullptr, "Model '%s': %s", qPrintable(m_name),
                             qPrintable(reason));
        return;
    }
    tar->addFile(&file, entry, abort);
}

// Decimal text comes back as float where the file format says so (shininess, centre).
void SceneVCGModel::loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort)
{
    SceneElement::loadFrom(reader, tar, scene, abort);
    const QStringRef tag = reader->name();
    if (tag == QLatin1String("drawmode")) {
        pendingDrawMode = reader->readElementText().toInt();
    } else if (tag == QLatin1String("wireframe")) {
        settings.wireframe = reader->readElementText().toInt() != 0;
    } else if (tag == QLatin1String("modelColor")) {
        readColor(reader, settings.modelColor);
    } else if (tag == QLatin1String("clippingColor")) {
        readColor(reader, settings.clippingColor);
    } else if (tag == QLatin1String("ambientColor")) {
        readColor(reader, settings.ambientColor);
    } else if (tag == QLatin1String("diffuseColor")) {
        readColor(reader, settings.diffuseColor);
    } else if (tag == QLatin1String("specularColor")) {
        readColor(reader, settings.specularColor);
    } else if (tag == QLatin1String("preSetCenter")) {
        const QXmlStreamAttributes attributes = reader->attributes();
        preSetCenter = Point(attributes.value("x").toFloat(), attributes.value("y").toFloat(),
                             attributes.value("z").toFloat());
    } else if (tag == QLatin1String("shininess")) {
        settings.shininess = reader->readElementText().toFloat();
    } else if (tag == QLatin1String("advancedColoring")) {
        settings.advancedColoring = reader->readElementText().toInt() != 0;
    } else if (tag == QLatin1String("filename")) {
        loadMesh(reader->readElementText(), tar, abort);
    }
}

// The mesh is built apart and taken over only when complete: a refused or aborted entry
// leaves the element as it was.
void SceneVCGModel::loadMesh(const QString& entry, io::ZTarFile* tar, bool& abort)
{
    const char* const function = "qel::scene::SceneVCGModel::loadFrom";
    std::unique_ptr<io::ZFile> file(tar ? tar->getFile(entry) : nullptr);
    if (!file)
        throw Exception(QStringLiteral("Could find file %1 in project file").arg(entry), LogFile, 1180, function);
    const QString project = tar->getArchivePath();
    auto refuse = [&](const QString& reason) {
        throw Exception(tr("Model '%1' can't be read from entry '%2' of project '%3': %4")
                            .arg(m_name, entry, project, reason),
                        LogFile, 1186, function);
    };
    if (!file->open(QIODevice::ReadOnly))
        refuse(file->errorString());
    ModelEntry::Counts counts;
    bool hasColors = false;
    QString reason;
    if (!ModelEntry::readCounts(file.get(), counts, hasColors, reason))
        refuse(reason);

    if (main::OutputConsole* console = main::Overseer::getInstance()->getOutputConsole()) {
        console->appendText(m_name);
        console->appendText(tr("# Vertices: %1").arg(counts.vertices));
        console->appendText(tr("# Triangles: %1").arg(counts.faces));
    }
    if (!checkForMemory(counts.vertices, counts.faces)) {
        log::Logger::log(2000, LogFile, 1203, function, nullptr, "Couldn't allocate enough memory to load model - abort");
        abort = true;
        return;
    }

    std::unique_ptr<MeshModel> mesh(new MeshModel);
    mesh->drawMode = pendingDrawMode;
    CMeshO& cm = mesh->cm;
    // The adjacency arrays are switched on directly: the data mask doesn't learn of them.
    cm.face.enableFaceFace();
    cm.face.enableVertexFace();
    if (hasColors)
        mesh->Enable(MeshModel::FACE_COLOR);
    if (counts.vertices > 0) {
        if (!ModelEntry::readRecords(file.get(), counts, cm, abort, reason)) {
            if (reason.isEmpty())
                return;
            refuse(reason);
        }
        MeshTopology::buildFaceFace(cm);
        MeshTopology::buildVertexFace(cm);
    } else if (counts.faces > 0) {
        refuse(tr("its %1 faces have no vertices").arg(counts.faces));
    }
    takeLoadedMesh(mesh.release(), counts.vertices > 0);
}

// A mesh without vertices stays busy: the element then shows its box.
void SceneVCGModel::takeLoadedMesh(MeshModel* mesh, bool complete)
{
    {
        QMutexLocker locker(&renderMutex);
        delete meshModel;
        meshModel = mesh;
    }
    if (!complete)
        return;
    initMeshModel();
    restoreSelectionFromFlags();
    meshModel->busy = false;
}

// Face flags come back from a project as they were saved, the selection mark with them:
// the set of selected faces is rebuilt from the marks, so that the two agree.
void SceneVCGModel::restoreSelectionFromFlags()
{
    QWriteLocker locker(&selectionLock);
    selectedFaces.clear();
    for (const CFaceO& face : meshModel->cm.face) {
        if (!face.isDeleted() && face.hasFlag(CFaceO::ELEMENT_SELECTED))
            selectedFaces.insert(&face);
    }
}

// The model properties panel is not part of the module yet.
QWidget* SceneVCGModel::createCustomGUI()
{
    return nullptr;
}

// ---------------------------------------------------------------------------------------
// Look

void SceneVCGModel::setSettings(const Settings* newSettings)
{
    const bool wireframeChanges = newSettings->wireframe != settings.wireframe;
    if (wireframeChanges)
        renderMutex.lock();
    settings = *newSettings;
    if (wireframeChanges)
        renderMutex.unlock();
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setChangedIfValid(const QColor& color, QColor& field)
{
    if (!color.isValid())
        return;
    field = color;
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setModelColor(const QColor& color)
{
    setChangedIfValid(color, settings.modelColor);
}

void SceneVCGModel::setAmbientColor(const QColor& color)
{
    setChangedIfValid(color, settings.ambientColor);
}

void SceneVCGModel::setDiffuseColor(const QColor& color)
{
    setChangedIfValid(color, settings.diffuseColor);
}

void SceneVCGModel::setSpecularColor(const QColor& color)
{
    setChangedIfValid(color, settings.specularColor);
}

void SceneVCGModel::setClippingColor(const QColor& color)
{
    if (color == settings.clippingColor)
        return;
    settings.clippingColor = color;
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setShininess(double shininess)
{
    settings.shininess = shininess >= 0.0 && shininess <= 128.0 ? shininess : 0.0;
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setWireframeEnabled(bool enabled)
{
    {
        QMutexLocker locker(&renderMutex);
        settings.wireframe = enabled;
    }
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::enableAdvancedColoring(bool enabled)
{
    settings.advancedColoring = enabled;
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setRenderPerFace(bool perFace)
{
    if (renderPerFace == perFace)
        return;
    renderPerFace = perFace;
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::setRenderNormals(bool render)
{
    if (renderNormals == render)
        return;
    renderNormals = render;
    setChanged(CHANGE_PROPERTY);
}

// The lock is how other code holds off drawing while it changes the mesh: its release
// drops the pick tree.
void SceneVCGModel::setRenderLock(bool lock)
{
    if (lock) {
        renderMutex.lock();
    } else {
        renderMutex.unlock();
        meshChanged();
    }
}

// ---------------------------------------------------------------------------------------
// Measures and picking

double SceneVCGModel::getAverageEdgeLength(unsigned int count) const
{
    const std::uint32_t sample = count * 3u;
    if (sample == 0 || !meshModel)
        return 0.0;
    double sum = 0.0;
    std::uint32_t edges = 0;
    for (const CFaceO& face : meshModel->cm.face) {
        if (face.hasCorners()) {
            sum += edgeLength(face.v[0], face.v[1]);
            sum += edgeLength(face.v[1], face.v[2]);
            sum += edgeLength(face.v[2], face.v[0]);
        }
        edges += 3;
        if (edges % sample == 0)
            break;
    }
    return sum / edges;
}

bool SceneVCGModel::intersect(const Line& line, const CFaceO** face, Point& point, double& distance, bool snap)
{
    const Box box = getBoundingBox(true).transform(m_transformMatrix * m_originMatrix);
    bool boxHit = false;
    for (const auto& triangle : BoxTriangles) {
        Point hit;
        double t = 0.0;
        if (intersectTriangle(cornerOf(box, triangle[0]), cornerOf(box, triangle[1]), cornerOf(box, triangle[2]),
                              line, hit, t)) {
            boxHit = true;
            break;
        }
    }
    if (!boxHit)
        return false;
    return intersectFacesAccelerated(line, face, point, distance, snap);
}

bool SceneVCGModel::intersectFaces(const Line& line, const CFaceO** face, Point& point, double& distance,
                                   bool snap) const
{
    if (face)
        *face = nullptr;
    if (!meshModel)
        return false;
    const Matrix4 complete = getCompleteTransformMatrix();
    const CFaceO* kept = nullptr;
    Point keptCorners[3];
    double best = std::numeric_limits<double>::max();
    for (const CFaceO& candidate : meshModel->cm.face) {
        if (candidate.isDeleted() || !candidate.hasCorners())
            continue;
        Point corners[3];
        Point hit;
        if (testFace(complete, candidate, line, corners, hit, distance) && distance < best) {
            best = distance;
            point = hit;
            kept = &candidate;
            std::copy(corners, corners + 3, keptCorners);
        }
    }
    if (kept && snap)
        snapToNearestCorner(keptCorners, point);
    if (face)
        *face = kept;
    return kept != nullptr;
}

// Equally near faces go to the lower place, as in the walk in storage order.
bool SceneVCGModel::intersectFacesAccelerated(const Line& line, const CFaceO** face, Point& point,
                                              double& distance, bool snap)
{
    const std::shared_ptr<const PickIndex> index = currentPickIndex();
    const Matrix4 complete = getCompleteTransformMatrix();
    LocalRay ray;
    if (!index || !toLocalRay(complete, line, index->tree, ray))
        return intersectFaces(line, face, point, distance, snap);
    if (face)
        *face = nullptr;
    const FaceVector& faces = meshModel->cm.face;
    const CFaceO* kept = nullptr;
    std::uint32_t keptPlace = 0;
    Point keptCorners[3];
    double best = std::numeric_limits<double>::max();
    index->tree.traverse(ray.origin, ray.direction, ray.margin, [&](std::uint32_t place) {
        const CFaceO& candidate = faces[place];
        if (candidate.isDeleted() || !candidate.hasCorners())
            return best;
        Point corners[3];
        Point hit;
        double t = 0.0;
        if (testFace(complete, candidate, line, corners, hit, t)
            && (t < best || (kept && t == best && place < keptPlace))) {
            best = t;
            point = hit;
            kept = &candidate;
            keptPlace = place;
            std::copy(corners, corners + 3, keptCorners);
        }
        return best;
    });
    lastPlaneCrossing(*index, complete, line, distance);
    if (kept && snap)
        snapToNearestCorner(keptCorners, point);
    if (face)
        *face = kept;
    return kept != nullptr;
}

// The walk in storage order leaves the parameter of its last crossing at or beyond the
// start in `distance`: that of the first such face from the end of the vector.
bool SceneVCGModel::lastPlaneCrossing(const PickIndex& index, const Matrix4& complete, const Line& line,
                                      double& distance) const
{
    const FaceVector& faces = meshModel->cm.face;
    return index.crossings.findLast(complete, line.start, line.end - line.start, [&](std::size_t place) {
        const CFaceO& candidate = faces[place];
        if (candidate.isDeleted() || !candidate.hasCorners())
            return false;
        Point normal;
        const double parameter =
            planeCrossing(transformed(complete, candidate.v[0]->coord), transformed(complete, candidate.v[1]->coord),
                          transformed(complete, candidate.v[2]->coord), line, normal);
        if (parameter < 0.0)
            return false;
        distance = parameter;
        return true;
    });
}

bool SceneVCGModel::MeshShape::operator==(const MeshShape& other) const
{
    return faces == other.faces && faceCount == other.faceCount && vertices == other.vertices
           && vertexCount == other.vertexCount && liveFaces == other.liveFaces && liveVertices == other.liveVertices
           && boxMinimum == other.boxMinimum && boxMaximum == other.boxMaximum;
}

SceneVCGModel::MeshShape SceneVCGModel::currentMeshShape() const
{
    const CMeshO& mesh = meshModel->cm;
    MeshShape shape;
    shape.faces = mesh.face.data();
    shape.faceCount = mesh.face.size();
    shape.vertices = mesh.vert.data();
    shape.vertexCount = mesh.vert.size();
    shape.liveFaces = mesh.fn;
    shape.liveVertices = mesh.vn;
    shape.boxMinimum = mesh.bbox.min;
    shape.boxMaximum = mesh.bbox.max;
    return shape;
}

// An unusable tree is kept as well, so that it isn't built again for every pick.
std::shared_ptr<const SceneVCGModel::PickIndex> SceneVCGModel::currentPickIndex()
{
    if (!meshModel)
        return nullptr;
    QMutexLocker locker(&pickTreeMutex);
    const MeshShape shape = currentMeshShape();
    if (!pickIndex || !(shape == pickIndexShape)) {
        pickIndex = std::make_shared<const PickIndex>(meshModel->cm);
        pickIndexShape = shape;
    }
    return pickIndex->tree.isUsable() ? pickIndex : nullptr;
}

bool SceneVCGModel::preparePickTree()
{
    return currentPickIndex() != nullptr;
}

void SceneVCGModel::meshChanged()
{
    QMutexLocker locker(&pickTreeMutex);
    pickIndex.reset();
}

double SceneVCGModel::planeCrossing(const Point& a, const Point& b, const Point& c, const Line& line, Point& normal)
{
    normal = (b - a).cross(c - a);
    const Point unitNormal = normal.getNormalized();
    const Point direction = line.end - line.start;
    return (unitNormal.dot(a) - unitNormal.dot(line.start)) / unitNormal.dot(direction);
}

bool SceneVCGModel::intersectTriangle(const Point& a, const Point& b, const Point& c, const Line& line, Point& hit,
                                      double& t)
{
    Point normal;
    const double parameter = planeCrossing(a, b, c, line, normal);
    if (parameter < 0.0)
        return false;
    t = parameter;
    const Point direction = line.end - line.start;
    hit = line.start + direction * parameter;
    return insideOfEdge(a, b, hit, normal) && insideOfEdge(b, c, hit, normal) && insideOfEdge(c, a, hit, normal);
}

// The figures are those of the element's records, in wrapping 32-bit arithmetic. The block
// is filled so that the pages really exist.
bool SceneVCGModel::checkForMemory(unsigned int vertices, unsigned int faces)
{
    const char* const function = "qel::scene::SceneVCGModel::checkForMemory";
    const std::uint32_t bytes = faces * 64u + vertices * 104u;
    const std::uint32_t need = (bytes + 824u) >> 20;
    log::Logger::log(3000, LogFile, 752, function, nullptr, "Vertex Count: %d, needed vertex memory: %d MiB",
                     static_cast<int>(vertices), static_cast<int>((vertices * 104u) >> 20));
    log::Logger::log(3000, LogFile, 753, function, nullptr, "Face Count: %d, needed face memory: %d MiB",
                     static_cast<int>(faces), static_cast<int>((faces * 64u) >> 20));
    log::Logger::log(3000, LogFile, 754, function, nullptr, "Total memory needed for working: %d MiB",
                     static_cast<int>(need * 2u));
    log::Logger::log(3000, LogFile, 755, function, nullptr, "Available physical memory: %d MiB",
                     static_cast<int>(util::MemInfo::getAvailableMemory() >> 20));
    const std::uint32_t blockSize = bytes * 2u + 1648u;
    void* block = std::malloc(blockSize);
    if (!block) {
        log::Logger::log(1000, LogFile, 761, function, nullptr, "Could not allocate requested memory (%d MiB)!",
                         static_cast<int>(need * 2u));
        return false;
    }
    log::Logger::log(4000, LogFile, 766, function, nullptr,
                     "Memory checks have been suspended on WIN64 platforms, because of incorrect values - load "
                     "models at your own risk");
    std::memset(block, 1, blockSize);
    std::free(block);
    return true;
}

// ---------------------------------------------------------------------------------------
// Face selection

bool SceneVCGModel::placeOf(const CFaceO* face, std::size_t& place) const
{
    if (!meshModel || meshModel->cm.face.empty())
        return false;
    const FaceVector& faces = meshModel->cm.face;
    const CFaceO* first = faces.data();
    const CFaceO* last = first + (faces.size() - 1);
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(face);
    if (address < reinterpret_cast<std::uintptr_t>(first) || address > reinterpret_cast<std::uintptr_t>(last))
        return false;
    place = (address - reinterpret_cast<std::uintptr_t>(first)) / sizeof(CFaceO);
    return true;
}

CFaceO& SceneVCGModel::flagFaceOf(std::size_t place)
{
    return meshModel->cm.face[place / 8];
}

void SceneVCGModel::changeFaceSelection(const std::vector<unsigned int>& faces, FaceListChange change, long line,
                                        const char* function)
{
    {
        QWriteLocker locker(&selectionLock);
        const std::size_t count = meshModel ? meshModel->cm.face.size() : 0;
        for (unsigned int place : faces) {
            if (place >= count) {
                log::Logger::log(1000, LogFile, line, function, nullptr, "Given face isn't part of that model!");
                continue;
            }
            CFaceO& face = meshModel->cm.face[place];
            if (face.isDeleted())
                continue;
            const bool select = change == FACES_ADD || (change == FACES_TOGGLE && !selectedFaces.count(&face));
            if (select) {
                selectedFaces.insert(&face);
                face.setFlag(CFaceO::ELEMENT_SELECTED);
            } else {
                selectedFaces.erase(&face);
                face.clearFlag(CFaceO::ELEMENT_SELECTED);
            }
        }
    }
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::addFaceSelection(const std::vector<unsigned int>& faces)
{
    changeFaceSelection(faces, FACES_ADD, 1130, "qel::scene::SceneVCGModel::addFaceSelection");
}

void SceneVCGModel::removeFaceSelection(const std::vector<unsigned int>& faces)
{
    changeFaceSelection(faces, FACES_REMOVE, 1162, "qel::scene::SceneVCGModel::removeFaceSelection");
}

void SceneVCGModel::toggleFaceSelection(const std::vector<unsigned int>& faces)
{
    changeFaceSelection(faces, FACES_TOGGLE, 1194, "qel::scene::SceneVCGModel::toggleFaceSelection");
}

bool SceneVCGModel::addFaceSelection(const CFaceO* face)
{
    std::size_t place = 0;
    if (!placeOf(face, place) || face->isDeleted())
        return false;
    QWriteLocker locker(&selectionLock);
    flagFaceOf(place).setFlag(CFaceO::ELEMENT_SELECTED);
    return selectedFaces.insert(face).second;
}

bool SceneVCGModel::removeFaceSelection(const CFaceO* face)
{
    std::size_t place = 0;
    if (!placeOf(face, place))
        return false;
    QWriteLocker locker(&selectionLock);
    flagFaceOf(place).clearFlag(CFaceO::ELEMENT_SELECTED);
    return selectedFaces.erase(face) > 0;
}

void SceneVCGModel::toggleFaceSelection(const CFaceO* face)
{
    std::size_t place = 0;
    if (!placeOf(face, place) || face->isDeleted())
        return;
    {
        QWriteLocker locker(&selectionLock);
        if (selectedFaces.erase(face) > 0) {
            flagFaceOf(place).clearFlag(CFaceO::ELEMENT_SELECTED);
        } else {
            selectedFaces.insert(face);
            flagFaceOf(place).setFlag(CFaceO::ELEMENT_SELECTED);
        }
    }
    setChanged(CHANGE_PROPERTY);
}

void SceneVCGModel::clearFaceSelection()
{
    {
        QWriteLocker locker(&selectionLock);
        for (const CFaceO* face : selectedFaces) {
            std::size_t place = 0;
            if (placeOf(face, place))
                flagFaceOf(place).clearFlag(CFaceO::ELEMENT_SELECTED);
        }
        selectedFaces.clear();
    }
    setChanged(CHANGE_PROPERTY);
}

bool SceneVCGModel::isFaceSelected(const CFaceO* face)
{
    QReadLocker locker(&selectionLock);
    return selectedFaces.count(face) > 0;
}

bool SceneVCGModel::isFaceSelected()
{
    QReadLocker locker(&selectionLock);
    return !selectedFaces.empty();
}

const SceneVCGModel::FaceSet& SceneVCGModel::getSelectedFaces()
{
    selectionLock.lockForRead();
    selectionLock.unlock();
    return selectedFaces;
}

// ---------------------------------------------------------------------------------------
// Drawing

void SceneVCGModel::initializeGL()
{
    if (meshModel)
        meshModel->glw->updateIndices();
}

void SceneVCGModel::drawGL()
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    if (renderNormals)
        drawNormals();
    if (m_opacity != 1.0)
        glEnable(GL_BLEND);
    applyMaterial();
    glEnable(GL_RESCALE_NORMAL);
    if (meshModel && meshModel->visible) {
        if (isMeshReady())
            drawMesh();
        else
            drawBoxOutline();
    }
    glDisable(GL_RESCALE_NORMAL);
    glPopAttrib();
}

// Lines of a hundredth of the model's size along the face or vertex normals.
void SceneVCGModel::drawNormals()
{
    const CMeshO* mesh = meshModel ? meshModel->activeMesh() : nullptr;
    if (!mesh)
        return;
    const float length =
        static_cast<float>(static_cast<float>(m_boundingSphereDiameter) * 0.01 / m_scalingFactor);
    glPushMatrix();
    glScaled(m_scalingFactor, m_scalingFactor, m_scalingFactor);
    GLMaterial::applyColor(0.0f, 0.0f, 0.9f, 1.0f);
    glBegin(GL_LINES);
    if (renderPerFace) {
        for (const CFaceO& face : mesh->face) {
            if (face.isDeleted() || !face.hasCorners())
                continue;
            const Point middle = barycenter(face);
            const Point tip = middle + face.normal * static_cast<double>(length);
            glVertex3dv(middle.data());
            glVertex3dv(tip.data());
        }
    } else {
        for (const CVertexO& vertex : mesh->vert) {
            if (vertex.isDeleted())
                continue;
            const Point tip = vertex.coord + vertex.normal * static_cast<double>(length);
            glVertex3dv(vertex.coord.data());
            glVertex3dv(tip.data());
        }
    }
    glEnd();
    glDisable(GL_COLOR_MATERIAL);
    glPopMatrix();
}

void SceneVCGModel::applyMaterial()
{
    const float alpha = static_cast<float>(m_opacity);
    if (settings.advancedColoring) {
        glDisable(GL_COLOR_MATERIAL);
        glMaterialOf(GL_AMBIENT, settings.ambientColor, alpha);
        glMaterialOf(GL_DIFFUSE, settings.diffuseColor, alpha);
        glMaterialOf(GL_SPECULAR, settings.specularColor, alpha);
        glMaterialf(GL_FRONT, GL_SHININESS, static_cast<float>(settings.shininess));
        // The box outline of a busy mesh is unlit: it shows the current colour.
        glColorOf(settings.diffuseColor, alpha);
    } else {
        GLMaterial::applyColor(settings.modelColor, alpha);
    }
}

bool SceneVCGModel::isMeshReady()
{
    QMutexLocker locker(&meshModel->meshMutex);
    return !meshModel->busy && meshModel->activeMesh();
}

void SceneVCGModel::drawBoxOutline()
{
    glDisable(GL_LIGHTING);
    drawBoxEdges(getBoundingBox(true));
}

// A variable mesh lives for one drawing.
void SceneVCGModel::drawMesh()
{
    QMutexLocker locker(&renderMutex);
    if (settings.wireframe) {
        glPushAttrib(GL_POLYGON_BIT);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    }
    glScaled(m_scalingFactor, m_scalingFactor, m_scalingFactor);
    meshModel->Render(meshModel->drawMode,
                      renderPerFace ? MeshRenderer::COLOR_PER_FACE : MeshRenderer::COLOR_PER_VERTEX,
                      MeshRenderer::TEXTURE_NONE);
    if (settings.wireframe)
        glPopAttrib();
    glDrawSelectedFaces();
    if (meshModel->activeMesh() == meshModel->variableMesh)
        meshModel->deleteVariableRenderedMesh();
}

// A frame that finds the set being changed shows no selection.
void SceneVCGModel::glDrawSelectedFaces()
{
    MeshRenderer::pushSelectionState(static_cast<float>(m_opacity), -2.0f);
    if (selectionLock.tryLockForRead()) {
        glBegin(GL_TRIANGLES);
        for (const CFaceO* face : selectedFaces) {
            for (int corner = 0; corner < 3; ++corner)
                glVertex3dv(face->v[corner]->coord.data());
        }
        selectionLock.unlock();
        glEnd();
    }
    MeshRenderer::popSelectionState();
}

} // namespace scene
} // namespace qel
