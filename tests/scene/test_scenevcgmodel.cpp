// The model element: its box and flags from the mesh, its look and what it announces, the
// face selection with its two flag paths, the average edge length, ray picks and the memory
// check.
#include "mesh/meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/mesh/meshrenderer.h"
#include "module_scene/meshmodel.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/scenevcgmodel.h"
#include "scene/testelement.h"
#include "support/logcapture.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <gtest/gtest.h>

namespace qel {
namespace test {
namespace {

using scene::CFaceO;
using scene::MeshModel;
using scene::SceneVCGModel;
typedef util::ZPointer<SceneVCGModel> ModelPointer;
typedef SceneVCGModel::Point Point3;

const int PROPERTY = scene::SceneElement::CHANGE_PROPERTY;

// A complete (not busy) mesh of the given geometry with box and normals.
MeshModel* makeMesh(const std::vector<Point>& points, const std::vector<Triangle>& triangles)
{
    auto* mesh = new MeshModel;
    buildMesh(mesh->cm, points, triangles);
    scene::MeshNormals::updateVertexAndFaceNormals(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    mesh->busy = false;
    return mesh;
}

// Two unit squares over [0,1]^2, the upper one (z = 1) first: faces 0, 1 at z = 1 and
// faces 2, 3 at z = 0; faces 0 and 2 lie below the diagonal (x > y).
ModelPointer makeLayers()
{
    std::vector<Point> points;
    for (double z : {1.0, 0.0}) {
        points.insert(points.end(), {Point(0.0, 0.0, z), Point(1.0, 0.0, z), Point(1.0, 1.0, z), Point(0.0, 1.0, z)});
    }
    return ModelPointer(new SceneVCGModel(makeMesh(points, {{0, 1, 2}, {0, 2, 3}, {4, 5, 6}, {4, 6, 7}}), "layers"));
}

// Twenty separate triangles, to see the flag of the pointer forms land on place / 8.
ModelPointer makeTwentyFaces()
{
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    for (int i = 0; i < 20; ++i) {
        const double x = i;
        points.insert(points.end(), {Point(x, 0.0, 0.0), Point(x + 1.0, 0.0, 0.0), Point(x, 1.0, 0.0)});
        triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    return ModelPointer(new SceneVCGModel(makeMesh(points, triangles), "twenty"));
}

SceneVCGModel::Line downwardsAt(double x, double y)
{
    return SceneVCGModel::Line{Point3(x, y, 5.0), Point3(x, y, 4.0)};
}

bool flagged(const CFaceO& face)
{
    return face.hasFlag(CFaceO::ELEMENT_SELECTED);
}

// A mesh ends through the shared GL context, which brings up the global viewer and its
// scene; the scene tests after these expect neither.
class SceneVCGModelTest : public ::testing::Test
{
protected:
    static void TearDownTestSuite() { delete gui::Viewer::getInstance(); }
};

} // namespace

TEST_F(SceneVCGModelTest, TakesItsBoxFlagsAndDrawSetupFromTheMesh)
{
    MeshModel* mesh = makeMesh({Point(0.0, 0.0, 0.0), Point(2.0, 4.0, 0.0), Point(0.0, 4.0, 6.0)}, {{0, 1, 2}});
    const ModelPointer model(new SceneVCGModel(mesh, "model"));

    EXPECT_EQ("SceneVCGModel", model->getTypeName());
    EXPECT_EQ(mesh, model->getMeshModel());
    EXPECT_EQ(6, mesh->drawMode);
    EXPECT_EQ(scene::MeshRenderer::HINT_DEFAULT | 0x4 | 0x200, mesh->glw->getHints());
    EXPECT_TRUE(model->hasBoundingBox());
    EXPECT_TRUE(model->hasScalingFactor());
    EXPECT_TRUE(model->hasCustomGUI());
    EXPECT_TRUE(model->isSerializable());
    EXPECT_TRUE(model->isIntersectable());
    EXPECT_TRUE(model->isOriginChangeable());
    for (const scene::CVertexO& vertex : mesh->cm.vert)
        EXPECT_EQ(model.get(), vertex.owner);

    const scene::SceneElement::Box raw = model->getBoundingBox(false);
    EXPECT_EQ(scene::SceneElement::Vector4(1.0, 2.0, 3.0, 1.0), raw.center);
    EXPECT_EQ(scene::SceneElement::Vector4(2.0, 4.0, 6.0, 0.0), raw.size);
    EXPECT_EQ(scene::SceneElement::Vector4(2.0, 4.0, 6.0, 1.0), raw.corners[0]);
    EXPECT_TRUE(raw == model->getBoundingBox(true));

    // An empty element for projects: no mesh, no name, no box yet; the factory knows the key.
    const scene::SceneElement::Pointer empty(SceneVCGModel::createElement());
    EXPECT_TRUE(empty->getName().isEmpty());
    EXPECT_FALSE(empty->hasBoundingBox());
    EXPECT_FALSE(static_cast<SceneVCGModel*>(empty.get())->getMeshModel());
    const scene::SceneElement::Pointer made(scene::SceneElementFactory::getInstance()->createElement("SceneVCGModel"));
    ASSERT_FALSE(made.isNull());
    EXPECT_EQ("SceneVCGModel", made->getTypeName());
}

TEST_F(SceneVCGModelTest, LookSettersAnnounceTheirChangesAsStated)
{
    const ModelPointer model = makeLayers();
    EXPECT_EQ(static_cast<double>(51.2f), model->getShininess());
    EXPECT_EQ(QColor::fromRgbF(0.23f, 0.09f, 0.03f, 1.0f), model->getAmbientColor());
    EXPECT_EQ(QColor(0, 204, 0), model->getClippingColor());
    EXPECT_TRUE(model->isRenderPerFaceEnabled());
    EXPECT_FALSE(model->isRenderNormalsEnabled());

    CauseRecorder recorder;
    model->attachObserver(&recorder);

    model->setShininess(128.0);
    EXPECT_EQ(128.0, model->getShininess());
    model->setShininess(128.5);
    EXPECT_EQ(0.0, model->getShininess());
    model->setShininess(-1.0);
    EXPECT_EQ(0.0, model->getShininess());
    EXPECT_EQ(std::vector<int>(3, PROPERTY), recorder.causes);

    // Invalid colours are ignored; the same valid colour is announced again.
    recorder.causes.clear();
    model->setModelColor(QColor());
    EXPECT_EQ(QColor(255, 255, 255), model->getModelColor());
    model->setModelColor(QColor(255, 255, 255));
    model->setDiffuseColor(QColor(1, 2, 3));
    EXPECT_EQ(QColor(1, 2, 3), model->getDiffuseColor());
    EXPECT_EQ(std::vector<int>(2, PROPERTY), recorder.causes);

    // The clipping colour only on a difference, and without a validity test.
    recorder.causes.clear();
    model->setClippingColor(QColor(0, 204, 0));
    EXPECT_TRUE(recorder.causes.empty());
    model->setClippingColor(QColor());
    EXPECT_FALSE(model->getClippingColor().isValid());
    EXPECT_EQ(1u, recorder.causes.size());

    // Flags with an equality test stay quiet when nothing changes.
    recorder.causes.clear();
    model->setRenderPerFace(true);
    model->setRenderNormals(false);
    EXPECT_TRUE(recorder.causes.empty());
    model->setRenderNormals(true);
    model->setWireframeEnabled(true);
    model->enableAdvancedColoring(true);
    EXPECT_EQ(std::vector<int>(3, PROPERTY), recorder.causes);

    // The whole set at once, announced once.
    recorder.causes.clear();
    SceneVCGModel::Settings settings;
    settings.modelColor = QColor(10, 20, 30);
    settings.shininess = 7.0;
    model->setSettings(&settings);
    EXPECT_EQ(QColor(10, 20, 30), model->getModelColor());
    EXPECT_FALSE(model->isWireframeEnabled());
    EXPECT_FALSE(model->isAdvancedColoringEnabled());
    EXPECT_EQ(7.0, model->getShininess());
    EXPECT_EQ(std::vector<int>(1, PROPERTY), recorder.causes);
    model->detachObserver(&recorder);
}

TEST_F(SceneVCGModelTest, ListSelectionLogsBadPlacesSkipsDeletedFacesAndAnnouncesOnce)
{
    const ModelPointer model = makeTwentyFaces();
    scene::FaceVector& faces = model->getMeshModel()->cm.face;
    faces[5].setDeleted();
    CauseRecorder recorder;
    model->attachObserver(&recorder);
    LogCapture log;

    model->addFaceSelection(std::vector<unsigned int>{0, 20, 5, 9});
    EXPECT_EQ(1, log.count("Given face isn't part of that model!", 1000));
    ASSERT_EQ(1u, log.records().size());
    EXPECT_EQ("qel::scene::SceneVCGModel::addFaceSelection", log.records()[0].function);
    EXPECT_EQ((SceneVCGModel::FaceSet{&faces[0], &faces[9]}), model->getSelectedFaces());
    EXPECT_TRUE(flagged(faces[0]) && flagged(faces[9]));
    EXPECT_FALSE(flagged(faces[5]));
    EXPECT_EQ(std::vector<int>(1, PROPERTY), recorder.causes);

    // An out-of-range place alone still announces a change.
    log.clear();
    recorder.causes.clear();
    model->removeFaceSelection(std::vector<unsigned int>{20});
    EXPECT_EQ("qel::scene::SceneVCGModel::removeFaceSelection", log.records().at(0).function);
    EXPECT_EQ(2u, model->getSelectedFaces().size());
    EXPECT_EQ(1u, recorder.causes.size());

    model->toggleFaceSelection(std::vector<unsigned int>{0, 3, 21});
    EXPECT_EQ("qel::scene::SceneVCGModel::toggleFaceSelection", log.records().at(1).function);
    EXPECT_EQ((SceneVCGModel::FaceSet{&faces[3], &faces[9]}), model->getSelectedFaces());
    EXPECT_FALSE(flagged(faces[0]));
    EXPECT_TRUE(flagged(faces[3]));

    // A selected face that is deleted later stays selected until removed.
    faces[3].setDeleted();
    EXPECT_TRUE(model->isFaceSelected(&faces[3]));
    model->removeFaceSelection(std::vector<unsigned int>{3});
    EXPECT_TRUE(model->isFaceSelected(&faces[3]));
    EXPECT_TRUE(model->removeFaceSelection(&faces[3]));
    EXPECT_FALSE(model->isFaceSelected(&faces[3]));
    model->detachObserver(&recorder);
}

TEST_F(SceneVCGModelTest, PointerSelectionFlagsThePlaceDividedByEightAndRefusesForeignPointers)
{
    const ModelPointer model = makeTwentyFaces();
    scene::FaceVector& faces = model->getMeshModel()->cm.face;
    CauseRecorder recorder;
    model->attachObserver(&recorder);

    EXPECT_TRUE(model->addFaceSelection(&faces[9]));
    EXPECT_FALSE(model->addFaceSelection(&faces[9]));
    EXPECT_TRUE(flagged(faces[1]));
    EXPECT_FALSE(flagged(faces[9]));
    EXPECT_TRUE(model->isFaceSelected(&faces[9]));
    EXPECT_TRUE(model->removeFaceSelection(&faces[9]));
    EXPECT_FALSE(model->removeFaceSelection(&faces[9]));
    EXPECT_FALSE(flagged(faces[1]));
    EXPECT_TRUE(recorder.causes.empty());

    // Outside the vector, or deleted: refused without a word.
    LogCapture log;
    const CFaceO* behind = faces.data() + faces.size();
    EXPECT_FALSE(model->addFaceSelection(behind));
    EXPECT_FALSE(model->removeFaceSelection(faces.data() - 1));
    CFaceO stranger;
    EXPECT_FALSE(model->addFaceSelection(&stranger));
    faces[19].setDeleted();
    EXPECT_FALSE(model->addFaceSelection(&faces[19]));
    model->toggleFaceSelection(&faces[19]);
    EXPECT_FALSE(model->isFaceSelected());
    EXPECT_TRUE(log.records().empty());
    EXPECT_TRUE(recorder.causes.empty());

    model->toggleFaceSelection(&faces[17]);
    EXPECT_TRUE(model->isFaceSelected(&faces[17]));
    EXPECT_TRUE(flagged(faces[2]));
    EXPECT_EQ(std::vector<int>(1, PROPERTY), recorder.causes);

    // Clearing goes the pointer path: a flag set by the list form at place 9 stays.
    model->addFaceSelection(std::vector<unsigned int>{9});
    model->clearFaceSelection();
    EXPECT_FALSE(model->isFaceSelected());
    EXPECT_FALSE(flagged(faces[2]));
    EXPECT_TRUE(flagged(faces[9]));
    EXPECT_EQ(std::vector<int>(3, PROPERTY), recorder.causes);
    model->detachObserver(&recorder);
}

TEST_F(SceneVCGModelTest, AverageEdgeLengthOfTheFirstFacesInStorageOrder)
{
    // A 3-4-5 triangle (perimeter 12), then an equilateral one of side 2 (perimeter 6).
    const double h = std::sqrt(3.0);
    const ModelPointer model(new SceneVCGModel(
        makeMesh({Point(0.0, 0.0, 0.0), Point(3.0, 0.0, 0.0), Point(0.0, 4.0, 0.0), Point(10.0, 0.0, 0.0),
                  Point(12.0, 0.0, 0.0), Point(11.0, h, 0.0)},
                 {{0, 1, 2}, {3, 4, 5}}),
        "edges"));
    EXPECT_EQ(0.0, model->getAverageEdgeLength(0));
    EXPECT_DOUBLE_EQ(4.0, model->getAverageEdgeLength(1));
    EXPECT_DOUBLE_EQ(3.0, model->getAverageEdgeLength(2));
    EXPECT_DOUBLE_EQ(3.0, model->getAverageEdgeLength(50));
    model->getMeshModel()->cm.face[0].setDeleted();
    EXPECT_DOUBLE_EQ(4.0, model->getAverageEdgeLength(1));

    const ModelPointer empty(new SceneVCGModel(makeMesh({}, {}), "empty"));
    EXPECT_TRUE(std::isnan(empty->getAverageEdgeLength(3)));
}

TEST_F(SceneVCGModelTest, IntersectKeepsTheNearestFaceAndReportsTheLastPlaneCrossing)
{
    const ModelPointer model = makeLayers();
    const scene::FaceVector& faces = model->getMeshModel()->cm.face;
    const CFaceO* face = nullptr;
    Point3 point;
    double distance = -1.0;

    // Above the face (0,2,3) of both layers: the upper one is nearer (t 4); the walk ends on
    // the lower layer, whose crossing (t 5) is what distance tells.
    ASSERT_TRUE(model->intersect(downwardsAt(0.25, 0.75), &face, point, distance, false));
    EXPECT_EQ(&faces[1], face);
    EXPECT_EQ(Point3(0.25, 0.75, 1.0), point);
    EXPECT_EQ(5.0, distance);

    // On the shared diagonal both faces of a layer are hit at the same t: the first wins.
    ASSERT_TRUE(model->intersect(downwardsAt(0.5, 0.5), &face, point, distance, false));
    EXPECT_EQ(&faces[0], face);

    // Snapping gives the hit face's corner nearest to the hit.
    ASSERT_TRUE(model->intersect(downwardsAt(0.1, 0.8), &face, point, distance, true));
    EXPECT_EQ(Point3(0.0, 1.0, 1.0), point);

    // A miss of the box writes nothing.
    face = &faces[2];
    point = Point3(7.0, 7.0, 7.0);
    distance = 42.0;
    EXPECT_FALSE(model->intersect(downwardsAt(5.0, 5.0), &face, point, distance, false));
    EXPECT_EQ(&faces[2], face);
    EXPECT_EQ(Point3(7.0, 7.0, 7.0), point);
    EXPECT_EQ(42.0, distance);

    // Through the box between the layers: no face, the face pointer cleared.
    const SceneVCGModel::Line sideways{Point3(-5.0, 0.5, 0.5), Point3(-4.0, 0.5, 0.5)};
    EXPECT_FALSE(model->intersect(sideways, &face, point, distance, false));
    EXPECT_EQ(nullptr, face);
    EXPECT_EQ(Point3(7.0, 7.0, 7.0), point);

    // Deleted faces don't count; the lower layer answers.
    model->getMeshModel()->cm.face[1].setDeleted();
    ASSERT_TRUE(model->intersect(downwardsAt(0.25, 0.75), &face, point, distance, false));
    EXPECT_EQ(&faces[3], face);
    EXPECT_EQ(Point3(0.25, 0.75, 0.0), point);
}

TEST_F(SceneVCGModelTest, IntersectWorksInWorldCoordinatesAndTheFaceWalkAnswersAlike)
{
    const ModelPointer model = makeLayers();
    model->setTransformMatrix(scene::SceneElement::Matrix4::translation(10.0, 0.0, 0.0));
    const CFaceO* face = nullptr;
    Point3 point;
    double distance = 0.0;
    EXPECT_FALSE(model->intersect(downwardsAt(0.25, 0.75), &face, point, distance, false));
    ASSERT_TRUE(model->intersect(downwardsAt(10.25, 0.75), &face, point, distance, true));
    EXPECT_EQ(&model->getMeshModel()->cm.face[1], face);
    EXPECT_EQ(Point3(10.0, 1.0, 1.0), point);

    // Without the box test the walk gives the same answers wherever the box is hit.
    for (double x : {10.1, 10.5, 10.9}) {
        for (double y : {0.1, 0.5, 0.9}) {
            for (bool snap : {false, true}) {
                const CFaceO* walked = nullptr;
                Point3 walkedPoint;
                double walkedDistance = 0.0;
                ASSERT_TRUE(model->intersect(downwardsAt(x, y), &face, point, distance, snap));
                ASSERT_TRUE(model->intersectFaces(downwardsAt(x, y), &walked, walkedPoint, walkedDistance, snap));
                EXPECT_EQ(face, walked);
                EXPECT_EQ(point, walkedPoint);
                EXPECT_EQ(distance, walkedDistance);
            }
        }
    }

    // The triangle test: an edge is inside; behind the start there is no hit and no t.
    const Point3 a(0.0, 0.0, 0.0), b(1.0, 0.0, 0.0), c(0.0, 1.0, 0.0);
    Point3 hit;
    double t = -7.0;
    EXPECT_TRUE(SceneVCGModel::intersectTriangle(a, b, c, downwardsAt(0.5, 0.0), hit, t));
    EXPECT_EQ(5.0, t);
    t = -7.0;
    EXPECT_FALSE(SceneVCGModel::intersectTriangle(a, b, c, SceneVCGModel::Line{Point3(0.2, 0.2, 1.0),
                                                                                Point3(0.2, 0.2, 2.0)},
                                                  hit, t));
    EXPECT_EQ(-7.0, t);
    EXPECT_FALSE(SceneVCGModel::intersectTriangle(a, b, c, downwardsAt(0.6, 0.6), hit, t));
    EXPECT_EQ(5.0, t);
}

TEST_F(SceneVCGModelTest, MemoryCheckLogsItsFiguresInWrapping32BitArithmetic)
{
    LogCapture log;
    EXPECT_TRUE(SceneVCGModel::checkForMemory(100000, 200000));
    std::vector<QString> lines;
    for (const log::LogRecord& record : log.records()) {
        if (QString(record.function) == "qel::scene::SceneVCGModel::checkForMemory")
            lines.push_back(QString::number(record.level) + " " + record.text);
    }
    ASSERT_EQ(5u, lines.size());
    EXPECT_EQ("3000 Vertex Count: 100000, needed vertex memory: 9 MiB", lines[0]);
    EXPECT_EQ("3000 Face Count: 200000, needed face memory: 12 MiB", lines[1]);
    EXPECT_EQ("3000 Total memory needed for working: 44 MiB", lines[2]);
    EXPECT_TRUE(lines[3].startsWith("3000 Available physical memory: ")) << lines[3].toStdString();
    EXPECT_TRUE(lines[4].startsWith("4000 Memory checks have been suspended")) << lines[4].toStdString();

    // 2^26 faces of 64 bytes wrap to nothing.
    log.clear();
    EXPECT_TRUE(SceneVCGModel::checkForMemory(0, 67108864));
    EXPECT_TRUE(log.contains("Face Count: 67108864, needed face memory: 0 MiB"));
    EXPECT_TRUE(log.contains("Total memory needed for working: 0 MiB"));
}

TEST_F(SceneVCGModelTest, ProjectXmlCarriesTheLookAndReadsDecimalsBackAsFloat)
{
    const ModelPointer model = makeLayers();
    model->setModelColor(QColor(1, 2, 3, 4));
    model->setShininess(12.3456789);
    model->setPreSetCenter(Point3(0.1, -2.5, 1e-3));
    model->enableAdvancedColoring(true);
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartElement("element");
    model->saveTo(&writer, nullptr, false);
    writer.writeEndElement();
    EXPECT_TRUE(xml.contains("<modelColor r=\"1\" g=\"2\" b=\"3\"/>")) << xml.toStdString();
    EXPECT_TRUE(xml.contains("<drawmode>6</drawmode>")) << xml.toStdString();

    const ModelPointer loaded(static_cast<SceneVCGModel*>(SceneVCGModel::createElement()));
    QXmlStreamReader reader(xml);
    bool abort = false;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() != QLatin1String("element"))
            loaded->loadFrom(&reader, nullptr, nullptr, abort);
    }
    EXPECT_EQ("layers", loaded->getName());
    EXPECT_EQ(QColor(1, 2, 3, 255), loaded->getModelColor());
    EXPECT_EQ(static_cast<double>(12.3457f), loaded->getShininess());
    EXPECT_EQ(Point3(0.1f, -2.5f, 1e-3f), loaded->getPreSetCenter());
    EXPECT_TRUE(loaded->isAdvancedColoringEnabled());
    EXPECT_EQ(model->getAmbientColor().rgb(), loaded->getAmbientColor().rgb());
}

} // namespace test
} // namespace qel
