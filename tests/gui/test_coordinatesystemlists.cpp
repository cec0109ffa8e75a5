// The digit lists of the coordinate system: made in the shared context while a panel paints
// its first frame, booked there, drawn by every panel, and given back when the coordinate
// system goes.
#include "module_scene/gui/sharedcontext.h"
#include "module_scene/scenecoordinatesystem.h"
#include "sceneviewfixture.h"
#include "support/logcapture.h"

#include <QOpenGLContext>
#include <gtest/gtest.h>

using qel::gui::SharedContext;
using qel::scene::SceneCoordinateSystem;
using namespace qel::test;

namespace {

const unsigned int NoList = 0xFFFFFFFFu;
// The x axis, (64, 16, 16) of 127 as bytes.
const QColor AxisRed(129, 32, 32);

int countNear(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += closeTo(color, image.pixelColor(x, y), 3) ? 1 : 0;
    }
    return count;
}

class CoordinateSystemListsTest : public SceneViewTest
{
protected:
    SceneCoordinateSystem* coordinateSystem()
    {
        return static_cast<SceneCoordinateSystem*>(scene->getRootNode().get());
    }

    static SharedContext* shared() { return qel::gui::Viewer::getInstance()->getSharedContext(); }

    // Whether the list is a list in the shared context; the caller's context stays current.
    static bool isListInSharedContext(unsigned int list)
    {
        QOpenGLContext* previous = QOpenGLContext::currentContext();
        QSurface* surface = previous ? previous->surface() : nullptr;
        shared()->makeCurrent();
        const bool found = glIsList(list);
        if (previous)
            previous->makeCurrent(surface);
        return found;
    }
};

} // namespace

TEST_F(CoordinateSystemListsTest, TheFrameThatMakesTheListsInTheSharedContextStillGoesToThePanel)
{
    EXPECT_EQ(NoList, coordinateSystem()->getFirstDigitList());
    qel::gui::ScenePanel* first = makePanel();
    render(first);
    const unsigned int replaced = coordinateSystem()->getFirstDigitList();
    ASSERT_NE(NoList, replaced);
    EXPECT_EQ(10, shared()->bookedRange(replaced));

    // A new root is set up in a single frame, which is the one read back.
    scene->setRootNode(qel::util::ZPointer<qel::scene::SceneElement>(new SceneCoordinateSystem));
    EXPECT_EQ(0, shared()->bookedRange(replaced)) << "the replaced root gave its lists back";
    EXPECT_GT(countNear(render(first), AxisRed), 50);
    const unsigned int list = coordinateSystem()->getFirstDigitList();
    ASSERT_NE(NoList, list);
    EXPECT_EQ(10, shared()->bookedRange(list));
    EXPECT_TRUE(isListInSharedContext(list));
    EXPECT_TRUE(isListInSharedContext(list + 9));

    // A second panel draws from the same lists.
    qel::gui::ScenePanel* second = makePanel();
    EXPECT_GT(countNear(render(second), AxisRed), 50);
    EXPECT_EQ(list, coordinateSystem()->getFirstDigitList());
}

TEST_F(CoordinateSystemListsTest, TheListsGoWithTheCoordinateSystem)
{
    render(makePanel());
    const unsigned int list = coordinateSystem()->getFirstDigitList();
    ASSERT_NE(NoList, list);

    panels.clear();
    scene->shutDown();
    scene = new qel::scene::Scene;
    EXPECT_EQ(0, shared()->bookedRange(list));
    EXPECT_FALSE(isListInSharedContext(list));
    EXPECT_FALSE(isListInSharedContext(list + 9));
}

TEST_F(CoordinateSystemListsTest, ACoordinateSystemNeverDrawnHasNothingToGiveBack)
{
    LogCapture log;
    { qel::util::ZPointer<SceneCoordinateSystem> bare(new SceneCoordinateSystem); }
    EXPECT_EQ(0, log.count("is not known!", 1000));
}
