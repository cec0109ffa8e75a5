// The selection bodies: the plane reports the faces with a vertex on or above it, the sphere
// those with a corner inside it, each among the models below its parent and in the models'
// world placement; the sphere's handle sets the radius and follows the sphere's moves.
#include "mesh/meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshtopology.h"
#include "module_scene/meshmodel.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/scenesphere.h"
#include "module_scene/scenevcgmodel.h"
#include "scene/testelement.h"

#include <QBuffer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <gtest/gtest.h>

namespace qel {
namespace test {
namespace {

using scene::SceneElement;
using scene::SceneSelectionPlane;
using scene::SceneSphere;
using scene::SceneVCGModel;
typedef util::ZPointer<SceneVCGModel> ModelPointer;
typedef util::ZPointer<SceneSelectionPlane> PlanePointer;
typedef util::ZPointer<SceneSphere> SpherePointer;
typedef SceneElement::Vector4 Vector4;
typedef SceneElement::Matrix4 Matrix4;
typedef std::vector<unsigned int> Places;

// A row of n unit squares along x in z = 0, two faces each: square i holds faces 2i and
// 2i + 1 and has its corners at x = i and x = i + 1. Vertex-face adjacency is built.
ModelPointer makeRow(int n, const QString& name, double shift = 0.0)
{
    std::vector<Point> points;
    for (int i = 0; i <= n; ++i)
        points.insert(points.end(), {Point(i + shift, 0.0, 0.0), Point(i + shift, 1.0, 0.0)});
    std::vector<Triangle> triangles;
    for (int i = 0; i < n; ++i) {
        const int bottom = 2 * i;
        triangles.push_back({bottom, bottom + 2, bottom + 3});
        triangles.push_back({bottom, bottom + 3, bottom + 1});
    }
    auto* mesh = new scene::MeshModel;
    buildMesh(mesh->cm, points, triangles);
    scene::MeshTopology::buildVertexFace(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    mesh->busy = false;
    return ModelPointer(new SceneVCGModel(mesh, name));
}

Places range(unsigned int first, unsigned int last)
{
    Places places;
    for (unsigned int place = first; place <= last; ++place)
        places.push_back(place);
    return places;
}

// Parent and child keep each other alive: the test ends the links.
struct Tree
{
    util::ZPointer<TestElement> root{new TestElement("root")};
    ~Tree() { clear(root.get()); }

    static void clear(SceneElement* element)
    {
        const SceneElement::ElementList childs = *element->getChilds();
        for (const SceneElement::Pointer& child : childs)
            clear(child.get());
        element->clearChilds();
    }
};

void expectNear(const Vector4& expected, const Vector4& actual)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(expected[i], actual[i], 1e-7) << "component " << i;
}

} // namespace

TEST(SceneSelectionPlane, StartsAsAGreenGridAtTheOriginFacingUp)
{
    const PlanePointer plane(new SceneSelectionPlane("plane"));
    EXPECT_EQ("SceneSelectionPlane", plane->getTypeName());
    EXPECT_EQ("plane", plane->getName());
    EXPECT_EQ(QColor(0, 230, 0), plane->getPlaneColor());
    EXPECT_TRUE(plane->isFocusable());
    EXPECT_FALSE(plane->isInternal());
    EXPECT_TRUE(plane->isTransformable());
    EXPECT_TRUE(plane->isReparentable());
    EXPECT_TRUE(plane->isSerializable());
    EXPECT_FALSE(plane->hasBoundingBox());
    EXPECT_TRUE(plane->hasScalingFactor());
    EXPECT_FALSE(plane->isIntersectable());
    EXPECT_FALSE(plane->isViewOrientationEnabled());
    EXPECT_EQ(Vector4(0.0, 0.0, 0.0, 1.0), plane->getPlaneBase());
    EXPECT_EQ(Vector4(0.0, 0.0, 1.0, 0.0), plane->getPlaneNormal());

    const SceneElement::Pointer made(scene::SceneElementFactory::getInstance()->createElement("SceneSelectionPlane"));
    ASSERT_FALSE(made.isNull());
    EXPECT_EQ("SceneSelectionPlane", made->getTypeName());
    EXPECT_TRUE(made->getName().isEmpty());
}

TEST(SceneSelectionPlane, NormalTurnsTheElementAndBaseMovesIt)
{
    const PlanePointer plane(new SceneSelectionPlane("plane"));
    plane->setPlaneBase(Vector4(1.0, 2.0, 3.0, 1.0));
    plane->setPlaneNormal(Vector4(1.0, 0.0, 0.0, 0.0));
    expectNear(Vector4(1.0, 0.0, 0.0, 0.0), plane->getPlaneNormal());
    EXPECT_EQ(Vector4(1.0, 2.0, 3.0, 1.0), plane->getPlaneBase());
    // The grid's z axis is the normal: the element's matrix turns it so.
    expectNear(Vector4(1.0, 0.0, 0.0, 0.0), plane->getTransformMatrix().getColumn(2));

    const Vector4 slanted = Vector4(0.0, 1.0, 1.0, 0.0) * (1.0 / std::sqrt(2.0));
    plane->setPlaneNormal(slanted);
    expectNear(slanted, plane->getPlaneNormal());
    EXPECT_EQ(Vector4(1.0, 2.0, 3.0, 1.0), plane->getPlaneBase());

    // The plane's distance goes through float.
    plane->setPlaneNormal(Vector4(0.0, 0.0, 1.0, 0.0));
    plane->setPlaneBase(Vector4(0.0, 0.0, 0.1, 1.0));
    const math::Plane<double> equation = plane->getPlane();
    EXPECT_EQ(static_cast<double>(0.1f), equation.distance);
    EXPECT_EQ(1.0, equation.normal.z());

    // Straight down there is no axis to turn about: nothing turns, nothing breaks.
    plane->setPlaneNormal(Vector4(0.0, 0.0, -1.0, 0.0));
    const Vector4 normal = plane->getPlaneNormal();
    for (int i = 0; i < 4; ++i)
        EXPECT_FALSE(std::isnan(normal[i]));
}

TEST(SceneSelectionPlane, FacesAboveCountVerticesOnThePlaneAndFollowTheModelsPlacement)
{
    Tree tree;
    const ModelPointer row = makeRow(6, "row");
    const ModelPointer nested = makeRow(2, "nested");
    const ModelPointer below = makeRow(2, "below", -10.0);
    const PlanePointer plane(new SceneSelectionPlane("plane"));
    tree.root->addChild(row);
    tree.root->addChild(below);
    row->addChild(nested);

    // Without a parent there is nothing to look at.
    plane->setPlaneBase(Vector4(3.0, 0.0, 0.0, 1.0));
    plane->setPlaneNormal(Vector4(1.0, 0.0, 0.0, 0.0));
    EXPECT_TRUE(plane->getFacesAbove().empty());

    tree.root->addChild(plane);
    SceneSelectionPlane::FaceMap faces = plane->getFacesAbove();
    // Vertices at x = 3 lie on the plane and count: face 5 has only one of them.
    ASSERT_EQ(1u, faces.size());
    EXPECT_EQ(range(4, 11), faces[SceneElement::Pointer(row.get())]);

    // Models further down the parent's subtree count; the placement is the world one.
    nested->setTransformMatrix(Matrix4::translation(2.5, 0.0, 0.0));
    row->setTransformMatrix(Matrix4::translation(-1.0, 0.0, 0.0));
    faces = plane->getFacesAbove();
    ASSERT_EQ(2u, faces.size());
    EXPECT_EQ(range(6, 11), faces[SceneElement::Pointer(row.get())]);
    EXPECT_EQ(range(0, 3), faces[SceneElement::Pointer(nested.get())]);

    // A hidden plane still selects.
    plane->setVisible(false);
    EXPECT_EQ(2u, plane->getFacesAbove().size());

    // Turned round, the plane takes the other side.
    plane->setPlaneNormal(Vector4(-1.0, 0.0, 0.0, 0.0));
    faces = plane->getFacesAbove();
    ASSERT_EQ(3u, faces.size());
    EXPECT_EQ(range(0, 9), faces[SceneElement::Pointer(row.get())]);
    EXPECT_EQ(range(0, 1), faces[SceneElement::Pointer(nested.get())]);
    EXPECT_EQ(range(0, 3), faces[SceneElement::Pointer(below.get())]);
}

TEST(SceneSelectionPlane, AlonePlaneFindsNoModelsAndItsColourTravelsThroughXml)
{
    Tree tree;
    const PlanePointer plane(new SceneSelectionPlane("plane"));
    tree.root->addChild(plane);
    tree.root->addChild(util::ZPointer<TestElement>(new TestElement("other")));
    EXPECT_TRUE(plane->getFacesAbove().empty());

    QByteArray xml;
    {
        QXmlStreamWriter writer(&xml);
        writer.writeStartElement("element");
        const bool abort = false;
        plane->saveTo(&writer, nullptr, abort);
        writer.writeEndElement();
    }
    EXPECT_TRUE(xml.contains("<planeColor r=\"0\" g=\"230\" b=\"0\"/>")) << xml.constData();

    const PlanePointer loaded(new SceneSelectionPlane(QString()));
    QXmlStreamReader reader(QByteArray("<element><name>p</name><planeColor r=\"10\" g=\"20\" b=\"30\"/></element>"));
    bool abort = false;
    reader.readNextStartElement();
    while (reader.readNextStartElement()) {
        loaded->loadFrom(&reader, nullptr, nullptr, abort);
        if (!reader.isEndElement())
            reader.skipCurrentElement();
    }
    EXPECT_EQ("p", loaded->getName());
    EXPECT_EQ(QColor(10, 20, 30, 255), loaded->getPlaneColor());
}

TEST(SceneSphere, HasAHandleAtRadiusFiftyThatSetsTheRadiusAndFollowsTheSphere)
{
    const SpherePointer sphere(new SceneSphere);
    const util::ZPointer<SceneSphere::Dragger> dragger = sphere->getDragger();
    EXPECT_EQ("Sphere", sphere->getTypeName());
    EXPECT_EQ("Sphere", sphere->getName());
    EXPECT_EQ("SceneSphere::Dragger", dragger->getTypeName());
    EXPECT_EQ("SphereDragger", dragger->getName());
    EXPECT_EQ(sphere.get(), dragger->getSphere());
    EXPECT_EQ(sphere.get(), dragger->getParentSceneElement().get());
    ASSERT_EQ(1u, sphere->getChilds()->size());
    EXPECT_EQ(dragger.get(), sphere->getChilds()->front().get());
    for (const SceneElement* element : {static_cast<const SceneElement*>(sphere.get()),
                                        static_cast<const SceneElement*>(dragger.get())}) {
        EXPECT_FALSE(element->isViewOrientationEnabled());
        EXPECT_FALSE(element->isReparentable());
        EXPECT_FALSE(element->isSerializable());
        EXPECT_TRUE(element->isManipulator());
    }
    EXPECT_TRUE(Matrix4::translation(50.0, 0.0, 0.0) == dragger->getTransformMatrix());
    EXPECT_EQ(50.0, sphere->getRadius());

    // The handle alone changes the radius; the sphere stays.
    dragger->translate(0.0, 20.0, 0.0);
    EXPECT_EQ(20.0, sphere->getRadius());
    EXPECT_TRUE(Matrix4::identity() == sphere->getTransformMatrix());

    // Moving the sphere moves the handle alike, and the radius stays.
    sphere->translate(5.0, 6.0, 7.0);
    EXPECT_EQ(Vector4(5.0, 26.0, 7.0, 1.0), dragger->getCenter());
    EXPECT_EQ(20.0, sphere->getRadius());
    *sphere += Matrix4::translation(1.0, 0.0, 0.0);
    EXPECT_EQ(Vector4(6.0, 26.0, 7.0, 1.0), dragger->getCenter());
    EXPECT_EQ(20.0, sphere->getRadius());

    const SceneElement::Pointer made(scene::SceneElementFactory::getInstance()->createElement("Sphere"));
    ASSERT_FALSE(made.isNull());
    EXPECT_EQ("Sphere", made->getTypeName());
    Tree::clear(made.get());
    Tree::clear(sphere.get());
}

TEST(SceneSphere, FacesInsideHaveACornerInsideAndFarModelsAreLeftAlone)
{
    Tree tree;
    const ModelPointer row = makeRow(6, "row");
    row->getBoundingSphereDiameter() = 7.0;
    const SpherePointer sphere(new SceneSphere);
    // Centre (3, 0.5, 0), radius 0.5: the corners at x = 3 lie on the sphere.
    sphere->translate(3.0, 0.5, 0.0);
    sphere->getDragger()->translate(3.0, 1.0, 0.0);
    ASSERT_EQ(0.5, sphere->getRadius());
    EXPECT_TRUE(sphere->getFacesInside().empty());

    tree.root->addChild(row);
    tree.root->addChild(sphere);
    const scene::FaceVector& faces = row->getMeshModel()->cm.face;
    EXPECT_TRUE(sphere->isInside(row.get(), &faces[5]));
    EXPECT_FALSE(sphere->isInside(row.get(), &faces[8]));
    SceneSphere::FaceMap found = sphere->getFacesInside();
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(range(4, 7), found[SceneElement::Pointer(row.get())]);

    // A face across the sphere with no corner inside is not inside.
    std::vector<Point> big{Point(-7.0, -10.0, 0.0), Point(13.0, -10.0, 0.0), Point(3.0, 10.0, 0.0)};
    auto* mesh = new scene::MeshModel;
    buildMesh(mesh->cm, big, {{0, 1, 2}});
    scene::MeshTopology::buildVertexFace(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    const ModelPointer across(new SceneVCGModel(mesh, "across"));
    across->getBoundingSphereDiameter() = 40.0;
    tree.root->addChild(across);
    EXPECT_FALSE(sphere->isInside(across.get(), &across->getMeshModel()->cm.face[0]));
    EXPECT_EQ(1u, sphere->getFacesInside().size());

    // A model placed far off whose bounding sphere can't reach the sphere is not looked at,
    // even though its vertices, offset in its own frame, come back into the sphere.
    const ModelPointer far = makeRow(6, "far", -100.0);
    far->setTransformMatrix(Matrix4::translation(100.0, 0.0, 0.0));
    far->getBoundingSphereDiameter() = 7.0;
    tree.root->addChild(far);
    EXPECT_FALSE(sphere->isInside(far.get(), &far->getMeshModel()->cm.face[5]));
    EXPECT_EQ(0u, sphere->getFacesInside().count(SceneElement::Pointer(far.get())));
    // With the full diameter the test is generous.
    far->getBoundingSphereDiameter() = 200.0;
    found = sphere->getFacesInside();
    EXPECT_EQ(range(4, 7), found[SceneElement::Pointer(far.get())]);
}

} // namespace test
} // namespace qel
