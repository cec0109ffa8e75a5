// The commands that put a new element into the scene, run as command strings.
#include "commands/commandfixture.h"
#include "support/logcapture.h"

#include "module_scene/clippingplane.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/scenesphere.h"

#include <cmath>

using namespace qel;
using qel::test::CommandTest;

TEST_F(CommandTest, AddClippingPlaneStopsSilentlyWhenEveryNumberIsTaken)
{
    for (int plane = 0; plane < 6; ++plane)
        ASSERT_TRUE(run("addclippingplane"));
    EXPECT_EQ(6u, scene()->getSceneElementsOfType("ClippingPlane").size());
    EXPECT_EQ(-1, scene()->findFreeClippingPlaneNumber());

    qel::test::LogCapture capture;
    EXPECT_TRUE(run("addclippingplane"));
    EXPECT_EQ(6u, scene()->getSceneElementsOfType("ClippingPlane").size());
    EXPECT_TRUE(capture.records().empty());
    EXPECT_EQ(0u, undoSteps());
}

TEST_F(CommandTest, AddSelectionPlaneIsBasedAtTheFirstModel)
{
    ASSERT_TRUE(run("addselectionplane"));
    util::ZPointer<scene::SceneElement> plane = scene()->getSceneElement("SelectionPlane");
    ASSERT_TRUE(plane);
    const auto defaultBase = static_cast<scene::SceneSelectionPlane*>(plane.get())->getTransformMatrix();

    util::ZPointer<test::TestElement> model = test::makeModel("model", 10, 10, 10);
    scene()->addElement(model.get());
    model->translate(5, 6, 7);
    ASSERT_TRUE(run("addselectionplane"));
    util::ZPointer<scene::SceneElement> second = scene()->getSceneElement("SelectionPlane_1");
    ASSERT_TRUE(second);
    EXPECT_NE(defaultBase, second->getTransformMatrix());
    EXPECT_DOUBLE_EQ(5.0, second->getTransformMatrix()[12]);
    EXPECT_DOUBLE_EQ(6.0, second->getTransformMatrix()[13]);
    EXPECT_DOUBLE_EQ(7.0, second->getTransformMatrix()[14]);
}

TEST_F(CommandTest, AddSphereEnclosesTheFirstModelOrHasRadiusFifty)
{
    ASSERT_TRUE(run("addsphere"));
    auto spheres = scene()->getSceneElementsOfType("Sphere");
    ASSERT_EQ(1u, spheres.size());
    EXPECT_DOUBLE_EQ(50.0, static_cast<scene::SceneSphere*>(spheres.front().get())->getRadius());
    scene()->removeElement(spheres.front().get());

    util::ZPointer<test::TestElement> model = test::makeModel("model", 3, 4, 12);
    scene()->addElement(model.get());
    model->translate(1, 2, 3);
    ASSERT_TRUE(run("addsphere"));
    spheres = scene()->getSceneElementsOfType("Sphere");
    ASSERT_EQ(1u, spheres.size());
    auto* sphere = static_cast<scene::SceneSphere*>(spheres.front().get());
    // The model is the only one, so its scaled box has a diagonal of 100.
    const auto& size = model->getBoundingBox(true).size;
    const double halfDiagonal = std::sqrt(size.x() * size.x() + size.y() * size.y() + size.z() * size.z()) * 0.5;
    EXPECT_NEAR(halfDiagonal + 0.01, sphere->getRadius(), 1e-9);
    EXPECT_DOUBLE_EQ(1.0, sphere->getTransformMatrix()[12]);
    EXPECT_DOUBLE_EQ(2.0, sphere->getTransformMatrix()[13]);
    EXPECT_DOUBLE_EQ(3.0, sphere->getTransformMatrix()[14]);
}
