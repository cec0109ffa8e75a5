// The scene panel: its frame, camera, saved view, repaints and the scene lock.
#include "cubemodel.h"
#include "sceneviewfixture.h"

#include <QSemaphore>
#include <QThread>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>

using qel::gui::ScenePanel;
using qel::scene::SceneVCGModel;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef ScenePanel::Matrix4 Matrix4;

// At least 60 percent of the 7 x 7 patch at (x, y) in the colour: lines of the grid may
// cross any corner.
::testing::AssertionResult mostly(const QImage& image, int x, int y, const QColor& color)
{
    int matching = 0;
    for (int dy = -3; dy <= 3; ++dy) {
        for (int dx = -3; dx <= 3; ++dx) {
            const int px = qBound(0, x + dx, image.width() - 1);
            const int py = qBound(0, y + dy, image.height() - 1);
            if (qel::test::closeTo(color, image.pixelColor(px, py)))
                ++matching;
        }
    }
    if (matching * 10 >= 49 * 6)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << matching << " of 49 pixels near (" << x << ", " << y << ") are "
                                         << color.name().toStdString();
}

// Runs the event loop until the condition holds or the rounds are used up.
template <class Condition>
bool processEventsUntil(Condition condition, int rounds = 200)
{
    for (int round = 0; round < rounds && !condition(); ++round) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return condition();
}

QString saveView(ScenePanel* panel)
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartElement("window");
    panel->saveTo(&writer);
    writer.writeEndElement();
    return xml;
}

void loadView(ScenePanel* panel, const QString& xml)
{
    QXmlStreamReader reader(xml);
    panel->loadFrom(&reader);
}

class ScenePanelTest : public qel::test::SceneViewTest
{
protected:
    DrawLog log;
};

} // namespace

TEST_F(ScenePanelTest, AModelCoversTheCentreInItsColourOnTheBackground)
{
    add(qel::test::makeCubeModel("cube", QColor(0, 0, 255)));
    ScenePanel* panel = makePanel(400, 300);

    const QImage image = render(panel);
    ASSERT_EQ(QSize(400, 300), image.size());
    EXPECT_TRUE(colorAt(image, 200, 150, QColor(0, 0, 255))) << "the face towards the eye, fully lit";
    EXPECT_TRUE(colorAt(image, 215, 140, QColor(0, 0, 255)));
    // The lower left holds the info layer.
    EXPECT_TRUE(mostly(image, 3, 3, DefaultBackground));
    EXPECT_TRUE(mostly(image, 396, 3, DefaultBackground));
    EXPECT_TRUE(mostly(image, 396, 296, DefaultBackground));
}

TEST_F(ScenePanelTest, TheBackgroundSettingColoursTheFrame)
{
    setSetting("settings/scenedefaultbackgroundcolor", "#203040");
    hideCoordinateSystem();
    ScenePanel* panel = makePanel();
    EXPECT_TRUE(colorAt(render(panel), 150, 50, QColor(0x20, 0x30, 0x40)));
}

TEST_F(ScenePanelTest, ATranslucentElementBlendsWithWhatLiesBehindIt)
{
    hideCoordinateSystem();
    add(new QuadElement("behind", QColor(255, 0, 0), 40.0, 0.0));
    ZPointer<QuadElement> front = add(new QuadElement("front", QColor(0, 0, 255), 20.0, 10.0));
    front->setOpacity(0.5);
    ScenePanel* panel = makePanel();

    const QImage image = render(panel);
    EXPECT_TRUE(colorAt(image, 100, 100, QColor(128, 0, 128), 3)) << "half of each";
    EXPECT_TRUE(colorAt(image, 100 + static_cast<int>(30 * pixelsPerUnit(200, 200.0)), 100, QColor(255, 0, 0)))
        << "beside the translucent square only the opaque one";
}

TEST_F(ScenePanelTest, TheSavedViewRestoresTheSamePicture)
{
    add(qel::test::makeCubeModel("cube", QColor(200, 200, 0)));
    ZPointer<QuadElement> beside = add(new QuadElement("beside", QColor(255, 0, 255), 10.0, 0.0));
    beside->setTransformMatrix(Matrix4::translation(45.0, 20.0, 0.0));
    ScenePanel* panel = makePanel();
    panel->setRotation(qel::math::Quaternion<double>::fromAxisAngle(qel::math::Vector<double, 3>(1.0, 1.0, 0.0).getNormalized(), 0.6));
    panel->getTransformMatrix()[12] = -12.0;
    panel->getTransformMatrix()[13] = 7.0;
    panel->setScale(1.3);
    const QImage original = render(panel);
    const QString saved = saveView(panel);

    panel->resetTransform();
    EXPECT_TRUE(panel->getTransformMatrix() == Matrix4::identity());
    EXPECT_EQ(1.0, panel->getScale());
    const QImage reset = render(panel);
    EXPECT_NE(original.pixelColor(100, 100), reset.pixelColor(100, 100)) << "the views differ where it counts";

    loadView(panel, saved);
    EXPECT_EQ(1.3, panel->getScale());
    const QImage restored = render(panel);
    for (int y = 5; y < 200; y += 10) {
        for (int x = 5; x < 200; x += 10)
            ASSERT_EQ(original.pixelColor(x, y), restored.pixelColor(x, y)) << x << ", " << y;
    }
}

TEST_F(ScenePanelTest, TheViewXmlIsReadToTheEndOfItsWindowAndSkipsWhatIsOutOfRange)
{
    ScenePanel* panel = makePanel();
    loadView(panel, "<window><transform>"
                    "<entry col=\"3\" row=\"0\">5</entry><entry col=\"4\" row=\"0\">9</entry>"
                    "<entry col=\"0\" row=\"7\">9</entry><entry col=\"1\" row=\"1\">2.5</entry>"
                    "</transform><scale>0.25</scale><oldscale>4</oldscale></window>"
                    "<window><scale>8</scale></window>");
    Matrix4 expected = Matrix4::identity();
    expected(0, 3) = 5.0;
    expected(1, 1) = 2.5;
    EXPECT_TRUE(panel->getTransformMatrix() == expected);
    EXPECT_EQ(0.25, panel->getScale()) << "reading stops at the end of the first window";

    loadView(panel, "<window><scale>2</scale></window>");
    EXPECT_TRUE(panel->getTransformMatrix() == Matrix4::identity()) << "no entries: the identity";

    const QString xml = saveView(panel);
    EXPECT_TRUE(xml.contains("<entry col=\"0\" row=\"0\">1</entry>")) << xml.toStdString();
    EXPECT_EQ(16, xml.count("<entry "));
    EXPECT_TRUE(xml.contains("<scale>2</scale><oldscale>4</oldscale>")) << xml.toStdString();
}

TEST_F(ScenePanelTest, TranslationExpressesDepthAsZoom)
{
    ScenePanel* panel = makePanel();
    panel->setTranslation(3.0, 4.0, -200.0);
    EXPECT_EQ(1.0, panel->getScale());
    EXPECT_EQ(3.0, panel->getTransformMatrix()[12]);
    EXPECT_EQ(4.0, panel->getTransformMatrix()[13]);
    panel->setTranslation(3.0, 4.0, 0.0);
    EXPECT_EQ(2.0, panel->getScale());
    EXPECT_EQ(6.0, panel->getTransformMatrix()[12]);
    EXPECT_EQ(8.0, panel->getTransformMatrix()[13]);
    EXPECT_TRUE(panel->getScaledTransformMatrix() == panel->getTransformMatrix() * Matrix4::scaling(2.0, 2.0, 2.0));
}

TEST_F(ScenePanelTest, ABusySceneCostsOneBlankFrame)
{
    hideCoordinateSystem();
    add(new QuadElement("quad", QColor(255, 0, 0), 20.0, 10.0, &log));
    ScenePanel* panel = makePanel();

    QSemaphore locked;
    QSemaphore release;
    QThread* holder = QThread::create([&]() {
        scene->lock();
        locked.release();
        release.acquire();
        scene->unlock();
    });
    holder->start();
    locked.acquire();
    log.clear();
    QImage image = render(panel);
    EXPECT_TRUE(log.empty()) << "nothing waits for the scene";
    EXPECT_TRUE(colorAt(image, 100, 100, DefaultBackground));
    release.release();
    holder->wait();
    delete holder;

    image = render(panel);
    EXPECT_EQ(1u, log.size());
    EXPECT_TRUE(colorAt(image, 100, 100, QColor(255, 0, 0)));
}

TEST_F(ScenePanelTest, RedrawEventsOfItsOwnSceneRepaintAndNewElementsAreInitialised)
{
    hideCoordinateSystem();
    add(new QuadElement("quad", QColor(255, 0, 0), 20.0, 10.0, &log));
    ScenePanel* panel = makePanel();
    ASSERT_TRUE(processEventsUntil([&]() { return !log.empty(); })) << "the shown panel paints";
    processEventsUntil([]() { return false; }, 10);

    ZPointer<qel::scene::Scene> other(new qel::scene::Scene);
    log.clear();
    other->triggerUpdate();
    processEventsUntil([&]() { return !log.empty(); }, 20);
    EXPECT_TRUE(log.empty()) << "another scene's redraw is not this panel's";
    other->shutDown();

    scene->triggerUpdate();
    EXPECT_TRUE(processEventsUntil([&]() { return !log.empty(); }));

    // Adding is a structural change: the next frame initialises the newcomer.
    ZPointer<QuadElement> late = add(new QuadElement("late", QColor(0, 255, 0), 5.0, 20.0, &log));
    EXPECT_EQ(0, late->initializeCalls);
    log.clear();
    EXPECT_TRUE(processEventsUntil([&]() { return qel::test::namesOf(log).contains("late"); }))
        << "the change repaints by itself";
    EXPECT_EQ(1, late->initializeCalls);
    Q_UNUSED(panel);
}

TEST_F(ScenePanelTest, FocusFollowsTheSceneForTransformableElementsOnly)
{
    ZPointer<QuadElement> quad = add(new QuadElement("quad", QColor(255, 0, 0), 20.0, 10.0));
    scene->setFocus(quad.get());
    ScenePanel* panel = makePanel();
    EXPECT_EQ(quad.get(), panel->getFocusElement()) << "taken from the scene with setScene";
    scene->setFocus(scene->getRootNode().get());
    EXPECT_EQ(nullptr, panel->getFocusElement()) << "the coordinate system is not transformable";
    scene->setFocus(quad.get());
    EXPECT_EQ(quad.get(), panel->getFocusElement());
}

TEST_F(ScenePanelTest, WithoutASceneThePanelIsInert)
{
    ScenePanel* panel = makePanel();
    ASSERT_NE(nullptr, panel->getDrawer());
    panel->setScene(nullptr);
    EXPECT_EQ(nullptr, panel->getDrawer());
    EXPECT_TRUE(panel->getScene().isNull());
    render(panel);
    panel->resize(120, 80);

    hideCoordinateSystem();
    ScenePanel bare(static_cast<QWidget*>(nullptr));
    EXPECT_EQ(nullptr, bare.getDrawer());
    EXPECT_EQ(7, bare.getAxisMask());
    EXPECT_EQ(ScenePanel::MODE_SCREEN, bare.getElementTransformMode());
    bare.setScene(scene);
    bare.resize(50, 50);
    EXPECT_TRUE(colorAt(bare.grabFramebuffer(), 40, 10, DefaultBackground));
}
