// The drawer's passes, order, modifiers, stereo and overlays, seen through elements that
// record the GL state they meet and through the pixels of the frame.
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/sceneevents.h"
#include "module_scene/selectedpoint.h"
#include "sceneviewfixture.h"

#include <gtest/gtest.h>

using qel::scene::SceneDrawer;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef SceneDrawer::Matrix4 Matrix4;

class SceneDrawerTest : public qel::test::SceneViewTest
{
protected:
    ZPointer<QuadElement> quad(const QString& name, double opacity, double z = 0.0,
                               qel::scene::SceneElement* parent = nullptr)
    {
        ZPointer<QuadElement> element = add(new QuadElement(name, Qt::white, 20.0, 10.0, &log), parent);
        element->setOpacity(opacity);
        element->setTransformMatrix(Matrix4::translation(0.0, 0.0, z));
        return element;
    }

    void fireSettingsChanged()
    {
        qel::main::Event event(qel::scene::SETTINGS_CHANGED, nullptr, nullptr, false);
        qel::main::EventManager::getInstance()->fireEvent(event);
    }

    DrawLog log;
};

int firstColumnAbove(const QImage& image, int row, int (QColor::*channel)() const, int threshold)
{
    for (int x = 0; x < image.width(); ++x) {
        if ((image.pixelColor(x, row).*channel)() > threshold)
            return x;
    }
    return -1;
}

} // namespace

TEST_F(SceneDrawerTest, SettingsDecideBackgroundStereoAndPointRadius)
{
    SceneDrawer drawer(scene);
    EXPECT_EQ(QColor("#4c4c4c"), drawer.getBackgroundColor());
    EXPECT_EQ(SceneDrawer::STEREO_OFF, drawer.getStereoMode());
    EXPECT_EQ(0.0, drawer.getStereoDisparity());
    EXPECT_EQ(1.0, drawer.getPointRadius());

    struct Case
    {
        int mode;
        int disparity;
        int expectedMode;
        double expectedDisparity;
    };
    // A disparity of 0 switches stereo off; a negative one counts as 0 and leaves it on.
    const Case cases[] = {{1, 0, 0, 0.0}, {1, -3, 1, 0.0}, {2, 8, 2, 4.0}, {3, 8, 0, 4.0}, {-1, 8, 0, 4.0}};
    for (const Case& c : cases) {
        setSetting("settings/stereomode", c.mode);
        setSetting("settings/stereodisparity", c.disparity);
        fireSettingsChanged();
        EXPECT_EQ(c.expectedMode, drawer.getStereoMode()) << c.mode << " " << c.disparity;
        EXPECT_EQ(c.expectedDisparity, drawer.getStereoDisparity()) << c.mode << " " << c.disparity;
    }

    setSetting("settings/scenedefaultbackgroundcolor", "#102030");
    setSetting("settings/pointradius", 2.5);
    fireSettingsChanged();
    EXPECT_EQ(QColor("#102030"), drawer.getBackgroundColor());
    EXPECT_EQ(2.5, drawer.getPointRadius());
    setSetting("settings/scenedefaultbackgroundcolor", "no colour");
    fireSettingsChanged();
    EXPECT_EQ(QColor("#102030"), drawer.getBackgroundColor()) << "an invalid colour is ignored";
}

TEST_F(SceneDrawerTest, FullOpacityIsOpaqueAndTranslucentElementsFollowBackToFront)
{
    hideCoordinateSystem();
    quad("near", 0.0, 50.0);
    quad("opaque", 1.0);
    quad("far", 0.999, -50.0);
    quad("beyond", 1.5);
    qel::gui::ScenePanel* panel = makePanel();
    panel->getTransformMatrix()[12] = 3.0;

    log.clear();
    render(panel);
    ASSERT_EQ((QStringList{"opaque", "far", "near"}), qel::test::namesOf(log))
        << "opacity above 1 takes neither pass; opacity 0 is still drawn";
    EXPECT_FALSE(log[0].blend);
    EXPECT_FALSE(log[0].cullFace);
    for (int i = 1; i < 3; ++i) {
        EXPECT_TRUE(log[i].blend) << log[i].name.toStdString();
        EXPECT_TRUE(log[i].cullFace) << log[i].name.toStdString();
    }
    EXPECT_TRUE(log[0].currentTransform == panel->getTransformMatrix()) << "the view of the frame is published";
}

TEST_F(SceneDrawerTest, ElementsAtOneDepthAreDrawnOncePerQueueEntry)
{
    hideCoordinateSystem();
    quad("first", 0.5, 20.0);
    quad("second", 0.5, 20.0);
    qel::gui::ScenePanel* panel = makePanel();

    log.clear();
    render(panel);
    EXPECT_EQ((QStringList{"first", "second", "first", "second"}), qel::test::namesOf(log));
}

TEST_F(SceneDrawerTest, ModifiersActOnTheirSubtreeAndAreReplayedAlongTheChainOnly)
{
    hideCoordinateSystem();
    qel::scene::SceneElement* root = scene->getRootNode().get();
    ZPointer<ClipModifier> sibling = add(new ClipModifier("sibling", 1, &log), root);
    ZPointer<ClipModifier> modifier = add(new ClipModifier("modifier", 0, &log), root);
    quad("opaque", 1.0, 0.0, modifier.get());
    quad("translucent", 0.5, 0.0, modifier.get());
    quad("after", 1.0, 0.0, root);
    qel::gui::ScenePanel* panel = makePanel();

    log.clear();
    render(panel);
    ASSERT_EQ((QStringList{"sibling", "modifier", "opaque", "after", "modifier", "translucent"}),
              qel::test::namesOf(log));
    const DrawRecord& opaque = log[2];
    EXPECT_TRUE(opaque.clipPlanes[0]) << "a child is cut by its parent";
    EXPECT_FALSE(opaque.clipPlanes[1]) << "a sibling's state ends with its own frame";
    EXPECT_FALSE(log[3].clipPlanes[0]) << "the parent's frame popped";
    const DrawRecord& translucent = log[5];
    EXPECT_TRUE(translucent.blend);
    EXPECT_TRUE(translucent.clipPlanes[0]) << "the modifier was replayed for the blended pass";
    EXPECT_FALSE(translucent.clipPlanes[1]) << "modifiers off the chain are not replayed";

    // Overlays come after the scene with the taken planes off: nothing is drawn by then.
    EXPECT_TRUE(scene->getAvailableClippingPlanes()[0]) << "test modifiers take no number";
}

TEST_F(SceneDrawerTest, ThePlacementCarriesViewAndScaleAndAScaleOfZeroIsSkipped)
{
    hideCoordinateSystem();
    quad("quad", 1.0);
    qel::gui::ScenePanel* panel = makePanel();
    panel->getTransformMatrix()[12] = 5.0;

    for (double scale : {2.0, 0.0}) {
        panel->setScale(scale);
        log.clear();
        render(panel);
        ASSERT_EQ(1u, log.size());
        const double expected = scale == 0.0 ? 1.0 : scale;
        EXPECT_DOUBLE_EQ(expected, log[0].modelView[0]) << scale;
        EXPECT_DOUBLE_EQ(expected, log[0].modelView[10]) << scale;
        EXPECT_DOUBLE_EQ(5.0, log[0].modelView[12]);
        EXPECT_DOUBLE_EQ(SceneDrawer::ZOBJECTCENTER, log[0].modelView[14]);
    }
}

TEST_F(SceneDrawerTest, RedCyanStereoPutsTheEyesIntoTheirChannelsWithTheDisparity)
{
    setSetting("settings/stereomode", 1);
    setSetting("settings/stereodisparity", 20);
    hideCoordinateSystem();
    add(new QuadElement("white", Qt::white, 20.0, 10.0, &log));
    qel::gui::ScenePanel* panel = makePanel(200, 200);

    log.clear();
    const QImage image = render(panel);
    ASSERT_EQ(2u, log.size()) << "one drawing per eye";
    EXPECT_EQ((std::vector<GLboolean>{GL_FALSE, GL_TRUE, GL_TRUE, GL_TRUE}),
              std::vector<GLboolean>(log[0].colorMask, log[0].colorMask + 4));
    EXPECT_DOUBLE_EQ(-10.0, log[0].modelView[12]);
    EXPECT_EQ((std::vector<GLboolean>{GL_TRUE, GL_FALSE, GL_FALSE, GL_TRUE}),
              std::vector<GLboolean>(log[1].colorMask, log[1].colorMask + 4));
    EXPECT_DOUBLE_EQ(10.0, log[1].modelView[12]);
    EXPECT_TRUE(log[1].blend) << "the second eye blends through its opaque pass";

    // The eyes see the square 2 x 10 units apart, at 190 units from the eye.
    const int row = 90;
    const int greenEdge = firstColumnAbove(image, row, &QColor::green, 200);
    const int redEdge = firstColumnAbove(image, row, &QColor::red, 200);
    const double expectedShift = 20.0 * pixelsPerUnit(200, 190.0);
    EXPECT_NEAR(expectedShift, redEdge - greenEdge, 1.5);
    EXPECT_TRUE(colorAt(image, greenEdge + 5, row, QColor(0x4c, 255, 255))) << "first eye alone: green and blue";
    EXPECT_TRUE(colorAt(image, 100, row, QColor(255, 255, 255))) << "both eyes";
    EXPECT_TRUE(colorAt(image, redEdge + static_cast<int>(40 * pixelsPerUnit(200, 190.0)) - 5, row,
                        QColor(255, 0x4c, 0x4c)))
        << "second eye alone: red";
}

TEST_F(SceneDrawerTest, RedBlueStereoWritesTheFirstEyeToBlueOnly)
{
    setSetting("settings/stereomode", 2);
    setSetting("settings/stereodisparity", 20);
    hideCoordinateSystem();
    add(new QuadElement("white", Qt::white, 20.0, 10.0, &log));
    qel::gui::ScenePanel* panel = makePanel(200, 200);

    const QImage image = render(panel);
    const int blueEdge = firstColumnAbove(image, 90, &QColor::blue, 200);
    EXPECT_TRUE(colorAt(image, blueEdge + 5, 90, QColor(0x4c, 0x4c, 255)));
}

TEST_F(SceneDrawerTest, TheLockMarkerAndTheModeMarkerSitAtTheLowerLeft)
{
    hideCoordinateSystem();
    qel::gui::ScenePanel* panel = makePanel(200, 200);
    QImage image = render(panel);
    EXPECT_TRUE(colorAt(image, 2, 197, QColor(32, 129, 32), 3)) << "unlocked: green";
    EXPECT_TRUE(colorAt(image, 7, 192, QColor(0, 255, 255))) << "screen mode: cyan";
    EXPECT_TRUE(colorAt(image, 197, 2, DefaultBackground));

    scene->transformLock();
    image = render(panel);
    EXPECT_TRUE(colorAt(image, 2, 197, QColor(129, 32, 32), 3)) << "locked: red";
    scene->transformUnlock();
}

TEST_F(SceneDrawerTest, PickedPointsAreSpheresGreenOrRedWhenSelected)
{
    setSetting("settings/pointradius", 10.0);
    hideCoordinateSystem();
    scene->addSelectedPoint(qel::scene::Scene::Vector4(0.0, 0.0, 0.0, 1.0));
    qel::gui::ScenePanel* panel = makePanel(200, 200);

    QImage image = render(panel);
    QColor centre = image.pixelColor(100, 100);
    EXPECT_GT(centre.green(), 150);
    EXPECT_LT(centre.red(), 40);
    EXPECT_TRUE(colorAt(image, 100, 100 - static_cast<int>(15 * pixelsPerUnit(200, 200.0)), DefaultBackground))
        << "the sphere has the radius of the setting";

    scene->getSelectedPoints()->front()->setSelected(true);
    image = render(panel);
    centre = image.pixelColor(100, 100);
    EXPECT_GT(centre.red(), 150);
    EXPECT_LT(centre.green(), 40);
}
