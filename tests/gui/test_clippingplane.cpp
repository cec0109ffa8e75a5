// Clipping planes: what they cut, the caps of the cut, their numbers, their XML and their panel.
#include "cubemodel.h"
#include "kernel/gui/qcolorframe.h"
#include "module_scene/clippingplane.h"
#include "sceneviewfixture.h"
#include "support/logcapture.h"
#include "test_meshrenderoffscreen.h"

#include <QCheckBox>
#include <QDockWidget>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>

using qel::scene::ClippingPlane;
using qel::scene::SceneVCGModel;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef qel::scene::SceneElement::Matrix4 Matrix4;

const QColor Blue(0, 0, 255);
const QColor DefaultClippingColor(0, 204, 0);

// The plane's normal (its local z) turned onto world +x: the half x < 0 goes.
Matrix4 keepPositiveX()
{
    return Matrix4::fromRows({0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1});
}

// The normal turned away from the eye: the front half goes and the cut faces the eye.
Matrix4 keepBehindOrigin()
{
    return Matrix4::fromRows({-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1});
}

class ClippingPlaneTest : public qel::test::SceneViewTest
{
protected:
    ZPointer<ClippingPlane> addPlane(const Matrix4& placement, qel::scene::SceneElement* parent = nullptr)
    {
        ZPointer<ClippingPlane> plane = add(new ClippingPlane, parent);
        plane->setTransformMatrix(placement);
        return plane;
    }

    ZPointer<SceneVCGModel> addCube(const QString& name, qel::scene::SceneElement* parent)
    {
        return add(makeCubeModel(name, Blue), parent);
    }

    // Pixels per scene unit in the plane z = 0 of a 200 x 200 panel.
    static int offset(double units) { return static_cast<int>(units * pixelsPerUnit(200, 200.0)); }
};

} // namespace

TEST_F(ClippingPlaneTest, APlaneRemovesTheHalfOfItsModelsOnItsBackSide)
{
    hideCoordinateSystem();
    ZPointer<ClippingPlane> plane = addPlane(keepPositiveX());
    ZPointer<SceneVCGModel> cube = addCube("cube", plane.get());
    ZPointer<SceneVCGModel> outside = addCube("outside", scene->getRootNode().get());
    outside->setTransformMatrix(Matrix4::translation(-100.0, 0.0, 0.0));
    EXPECT_EQ(0, plane->getPlaneNumber());
    EXPECT_FALSE(scene->getAvailableClippingPlanes()[0]);
    qel::gui::ScenePanel* panel = makePanel();

    QImage image = render(panel);
    EXPECT_TRUE(colorAt(image, 100 + offset(15), 100 + offset(10), Blue)) << "the kept half";
    EXPECT_TRUE(colorAt(image, 100 - offset(15), 100 + offset(10), DefaultBackground)) << "the removed half";

    // Hidden, the plane still clips; only its grid goes.
    plane->setVisible(false);
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 100 - offset(15), 100 + offset(10), DefaultBackground));
    EXPECT_TRUE(colorAt(image, 100 + offset(15), 100 + offset(10), Blue));

    // Only the subtree is cut: a model beside the plane keeps its left half.
    panel->getTransformMatrix()[12] = 100.0;
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 100 - offset(15), 100 + offset(10), Blue));

    scene->removeElement(plane.get());
    EXPECT_TRUE(scene->getAvailableClippingPlanes()[0]) << "removal frees the number";
}

TEST_F(ClippingPlaneTest, TheCutIsCappedInTheModelsClippingColourWhenColoringIsOn)
{
    hideCoordinateSystem();
    ZPointer<ClippingPlane> plane = addPlane(keepBehindOrigin());
    ZPointer<SceneVCGModel> cube = addCube("cube", plane.get());
    plane->setVisible(false);
    qel::gui::ScenePanel* panel = makePanel();

    QImage image = render(panel);
    EXPECT_FALSE(qel::test::closeTo(DefaultClippingColor, image.pixelColor(100, 100), 30))
        << "without coloring the inside of the model shows";
    EXPECT_FALSE(qel::test::closeTo(DefaultBackground, image.pixelColor(100, 100), 2));

    plane->setColoringEnabled(true);
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 100, 100, DefaultClippingColor));
    EXPECT_TRUE(colorAt(image, 100 + offset(25), 100 - offset(25), DefaultClippingColor));
    EXPECT_TRUE(colorAt(image, 100 + offset(40), 100, DefaultBackground)) << "the cap stops at the section";

    cube->setClippingColor(QColor(200, 100, 0));
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 100, 100, QColor(200, 100, 0)));

    LogCapture log;
    cube->setClippingColor(QColor());
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 100, 100, QColor(255, 0, 0))) << "an invalid colour becomes red";
    EXPECT_GE(log.count("Invalid clipping color of model cube", 2000), 1);
}

TEST_F(ClippingPlaneTest, EachModelGetsItsOwnCap)
{
    hideCoordinateSystem();
    ZPointer<ClippingPlane> plane = addPlane(keepBehindOrigin());
    plane->setVisible(false);
    plane->setColoringEnabled(true);
    ZPointer<SceneVCGModel> left = addCube("left", plane.get());
    ZPointer<SceneVCGModel> right = addCube("right", plane.get());
    left->setTransformMatrix(Matrix4::translation(-40.0, 0.0, 0.0));
    right->setTransformMatrix(Matrix4::translation(40.0, 0.0, 0.0));
    left->setClippingColor(QColor(255, 255, 0));
    right->setClippingColor(QColor(255, 0, 255));
    EXPECT_EQ((std::vector<SceneVCGModel*>{left.get(), right.get()}), plane->getModels());
    qel::gui::ScenePanel* panel = makePanel(400, 200);

    const QImage image = render(panel);
    EXPECT_TRUE(colorAt(image, 200 - offset(40), 100, QColor(255, 255, 0)));
    EXPECT_TRUE(colorAt(image, 200 + offset(40), 100, QColor(255, 0, 255)));
    EXPECT_TRUE(colorAt(image, 200, 100, DefaultBackground)) << "nothing between the sections";
}

TEST_F(ClippingPlaneTest, ASeventhPlaneHasNoNumberAndSaysSoWhenDrawn)
{
    hideCoordinateSystem();
    std::vector<ZPointer<ClippingPlane>> planes;
    for (int i = 0; i < 7; ++i)
        planes.push_back(addPlane(Matrix4::identity()));
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(i, planes[static_cast<size_t>(i)]->getPlaneNumber());
    EXPECT_EQ(-1, planes[6]->getPlaneNumber());
    // A plane with coloring on and no model below draws no cap.
    planes[0]->setColoringEnabled(true);
    qel::gui::ScenePanel* panel = makePanel();

    LogCapture log;
    const QImage image = render(panel);
    EXPECT_EQ(1, log.count("Plane number not set!", 2000));
    EXPECT_EQ("qel::scene::ClippingPlane::drawGL", log.records().front().function);
    EXPECT_TRUE(colorAt(image, 150, 50, DefaultBackground));
}

TEST_F(ClippingPlaneTest, OverlaysLeaveOnlyThePlanesTakenByElementsOff)
{
    qel::test::OffscreenTarget target;
    ASSERT_TRUE(target.isValid());
    qel::scene::SceneDrawer drawer(scene);
    glEnable(GL_CLIP_PLANE3);
    drawer.glDisableClippingPlanes();
    EXPECT_TRUE(glIsEnabled(GL_CLIP_PLANE3)) << "with no plane in use nothing is switched off";

    addPlane(Matrix4::identity());
    glEnable(GL_CLIP_PLANE0);
    drawer.glDisableClippingPlanes();
    EXPECT_FALSE(glIsEnabled(GL_CLIP_PLANE0));
    EXPECT_TRUE(glIsEnabled(GL_CLIP_PLANE3));
    glDisable(GL_CLIP_PLANE3);
}

TEST_F(ClippingPlaneTest, TheColoringSwitchTravelsThroughTheProjectXml)
{
    ZPointer<ClippingPlane> plane(new ClippingPlane);
    EXPECT_EQ("ClippingPlane", plane->getTypeName());
    EXPECT_EQ("ClippingPlane", plane->getName());
    EXPECT_TRUE(plane->isModifier());
    EXPECT_TRUE(plane->isSerializable());
    EXPECT_TRUE(plane->hasCustomGUI());
    EXPECT_FALSE(plane->isViewOrientationEnabled());
    plane->setColoringEnabled(true);

    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartElement("element");
    plane->saveTo(&writer, nullptr, false);
    writer.writeEndElement();
    EXPECT_TRUE(xml.contains("<coloringEnabled>1</coloringEnabled>")) << xml.toStdString();

    ZPointer<ClippingPlane> loaded(new ClippingPlane);
    QXmlStreamReader reader(xml);
    bool abort = false;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement)
            loaded->loadFrom(&reader, nullptr, scene.get(), abort);
    }
    EXPECT_TRUE(loaded->isColoringEnabled());
}

TEST_F(ClippingPlaneTest, ThePanelHasARowPerModelBelowThePlaneAndSetsColours)
{
    ZPointer<ClippingPlane> plane = addPlane(Matrix4::identity());
    ZPointer<SceneVCGModel> first = addCube("first", plane.get());
    auto* dock = qobject_cast<QDockWidget*>(plane->getCustomGUI());
    ASSERT_NE(nullptr, dock);
    EXPECT_EQ("ClippingPlaneGUI", dock->objectName());
    EXPECT_EQ(dock, plane->getCustomGUI()) << "built once";
    QCheckBox* box = dock->findChild<QCheckBox*>();
    ASSERT_NE(nullptr, box);
    EXPECT_EQ("Enable coloring", box->text());
    EXPECT_FALSE(box->isChecked());
    box->setChecked(true);
    EXPECT_TRUE(plane->isColoringEnabled());
    box->setChecked(false);
    EXPECT_FALSE(plane->isColoringEnabled());

    EXPECT_EQ(1, dock->findChildren<qel::gui::QColorFrame*>().size());
    // A model that comes later, even below another element, gets its row; leaving, it loses it.
    ZPointer<qel::test::QuadElement> group = add(new qel::test::QuadElement("group", Qt::white, 1.0, 0.0), plane.get());
    ZPointer<SceneVCGModel> second = addCube("second", group.get());
    QList<qel::gui::QColorFrame*> frames = dock->findChildren<qel::gui::QColorFrame*>();
    ASSERT_EQ(2, frames.size());
    qel::gui::QColorFrame* secondFrame = nullptr;
    for (qel::gui::QColorFrame* frame : frames) {
        if (frame->getUserData() == second.get())
            secondFrame = frame;
    }
    ASSERT_NE(nullptr, secondFrame);
    EXPECT_EQ(DefaultClippingColor, secondFrame->getColor());
    emit secondFrame->colorSelected(QColor(10, 20, 30), second.get());
    EXPECT_EQ(QColor(10, 20, 30), second->getClippingColor());
    EXPECT_EQ(DefaultClippingColor, first->getClippingColor());

    group->removeChild(second);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(1, dock->findChildren<qel::gui::QColorFrame*>().size());
}
