// A model's colour never depends on what the frame drew before it: spheres, selection planes,
// clipping planes and picked points each set the colour state they draw with, and the model
// sets the one it is drawn with.
#include "cubemodel.h"
#include "module_scene/clippingplane.h"
#include "module_scene/scenesphere.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/selectedpoint.h"
#include "sceneviewfixture.h"

#include <gtest/gtest.h>

using qel::scene::SceneElement;
using qel::scene::SceneVCGModel;
using qel::util::ZPointer;
using namespace qel::test;

namespace {

typedef SceneElement::Matrix4 Matrix4;
typedef SceneElement::Vector4 Vector4;

const QColor Blue(0, 0, 255);
// The default model colour is also GL's first current colour: setting it changes nothing
// that GL would notice.
const QColor White(255, 255, 255);

class ElementGLStateTest : public SceneViewTest
{
protected:
    void SetUp() override
    {
        SceneViewTest::SetUp();
        hideCoordinateSystem();
    }

    // The model's centre pixel in a frame drawn after another one, so that what the
    // overlays of the first frame left behind reaches the model too.
    QColor centreAfterTwoFrames(qel::gui::ScenePanel* panel)
    {
        render(panel);
        return render(panel).pixelColor(100, 100);
    }

    void addModel(const QColor& color = White) { model = add(makeCubeModel("cube", color)); }

    // Places an element behind the model, out of the way of the centre pixel.
    template <class T>
    ZPointer<T> addBehind(T* element)
    {
        ZPointer<T> added = add(element);
        added->setTransformMatrix(Matrix4::translation(0.0, 0.0, -150.0));
        return added;
    }

    // The model drawn alone, then with the other elements in the tree ahead of it.
    void expectSameColourWith(const std::function<void()>& addOthers)
    {
        addModel();
        qel::gui::ScenePanel* panel = makePanel();
        const QColor alone = centreAfterTwoFrames(panel);
        ASSERT_FALSE(closeTo(DefaultBackground, alone, 2)) << "the model covers the centre";
        scene->removeElement(model.get());
        model = ZPointer<SceneVCGModel>();

        addOthers();
        addModel();
        EXPECT_TRUE(colorAt(render(panel), 100, 100, alone)) << "first frame";
        EXPECT_TRUE(colorAt(render(panel), 100, 100, alone)) << "second frame";
    }

    ZPointer<SceneVCGModel> model;
};

} // namespace

TEST_F(ElementGLStateTest, ASphereLeavesNoColourOnTheModel)
{
    expectSameColourWith([this] { addBehind(new qel::scene::SceneSphere); });
}

TEST_F(ElementGLStateTest, ASelectionPlaneLeavesNoColourOnTheModel)
{
    expectSameColourWith([this] { addBehind(new qel::scene::SceneSelectionPlane("plane")); });
}

TEST_F(ElementGLStateTest, AClippingPlaneLeavesNoColourOnTheModel)
{
    expectSameColourWith([this] {
        ZPointer<qel::scene::ClippingPlane> plane = addBehind(new qel::scene::ClippingPlane);
        plane->setColoringEnabled(true);
    });
}

TEST_F(ElementGLStateTest, PickedPointsLeaveNoColourOnTheModel)
{
    expectSameColourWith([this] {
        ZPointer<SceneVCGModel> other = add(makeCubeModel("other", White));
        other->setTransformMatrix(Matrix4::translation(60.0, 60.0, 0.0));
        scene->addSelectedPoint(Vector4(60.0, 60.0, 40.0, 1.0), other.get());
        scene->addSelectedPoint(Vector4(-60.0, 60.0, 0.0, 1.0));
        scene->getSelectedPoints()->front()->setSelected(true);
    });
}

TEST_F(ElementGLStateTest, TheCoordinateSystemLeavesNoColourOnTheModel)
{
    expectSameColourWith([this] { scene->getRootNode()->setVisible(true); });
}

TEST_F(ElementGLStateTest, AnotherModelLeavesNoColourOnTheModel)
{
    expectSameColourWith([this] {
        ZPointer<SceneVCGModel> other = addBehind(makeCubeModel("blue", Blue));
        other->setRenderNormals(true);
    });
}

TEST_F(ElementGLStateTest, AModelOfItsOwnMaterialLeavesNoHighlightOnTheModel)
{
    expectSameColourWith([this] {
        ZPointer<SceneVCGModel> other = addBehind(makeCubeModel("shiny", Blue));
        other->enableAdvancedColoring(true);
    });
}
