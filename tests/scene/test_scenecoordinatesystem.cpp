#include "module_scene/scenecoordinatesystem.h"
#include "module_scene/sceneelementfactory.h"

#include <gtest/gtest.h>
#include <memory>

using qel::scene::SceneCoordinateSystem;

TEST(SceneCoordinateSystem, IsRegisteredUnderItsKey)
{
    std::unique_ptr<qel::scene::SceneElement> root(
        qel::scene::SceneElementFactory::getInstance()->createElement("Coordinatesystem"));
    ASSERT_NE(nullptr, root);
    EXPECT_EQ("Coordinatesystem", root->getName());
    EXPECT_EQ("Coordinatesystem", root->getTypeName());
}

TEST(SceneCoordinateSystem, TheGridPitchStaysBetweenATenthAndAHundred)
{
    float pitch = 0.0f;
    float unit = 0.0f;
    SceneCoordinateSystem::computeGridPitch(1e-13f, 1.0f, pitch, unit);
    EXPECT_EQ(10.0f, pitch);
    EXPECT_EQ(10.0f, unit);

    SceneCoordinateSystem::computeGridPitch(25.0f, 1.0f, pitch, unit);
    EXPECT_FLOAT_EQ(2.5f, pitch);
    EXPECT_FLOAT_EQ(0.1f, unit);

    // Exactly 100 is kept; below a tenth it grows to at least 1.
    SceneCoordinateSystem::computeGridPitch(10.0f, 1.0f, pitch, unit);
    EXPECT_FLOAT_EQ(100.0f, pitch);
    EXPECT_FLOAT_EQ(10.0f, unit);
    SceneCoordinateSystem::computeGridPitch(0.0254f, 25.4f, pitch, unit);
    EXPECT_FLOAT_EQ(1.0f, pitch);
    EXPECT_FLOAT_EQ(1000.0f, unit);
}
