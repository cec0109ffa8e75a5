#include "module_scene/sceneelementfactory.h"
#include "support/logcapture.h"
#include "testelement.h"

#include <gtest/gtest.h>
#include <memory>

using qel::scene::SceneElement;
using qel::scene::SceneElementFactory;
using qel::test::TestElement;

namespace {

SceneElement* createFirst()
{
    return new TestElement("first", "FactoryTestType");
}

SceneElement* createSecond()
{
    return new TestElement("second", "FactoryTestType");
}

const QString FactoryTestKey = "FactoryTestType";

} // namespace

TEST(SceneElementFactory, RegisterStaticsKeepTheFirstCreatorAndUnregisterWhenTheyGo)
{
    auto* factory = SceneElementFactory::getInstance();
    qel::test::LogCapture log;
    {
        SceneElementFactory::Register first(FactoryTestKey, &createFirst);
        SceneElementFactory::Register second(FactoryTestKey, &createSecond);
        ASSERT_EQ(1, log.count("'FactoryTestType' is already registered as an SceneElementName", 0));
        const auto record = log.records().front();
        EXPECT_EQ("module_scene/sceneelementfactory", record.file);
        EXPECT_EQ(54, record.line);
        EXPECT_EQ("qel::scene::SceneElementFactory::registerElement", record.function);

        std::unique_ptr<SceneElement> made(factory->createElement(FactoryTestKey));
        ASSERT_NE(nullptr, made);
        EXPECT_EQ("first", made->getName());
        EXPECT_TRUE(factory->getRegisteredKeys().contains(FactoryTestKey));
    }
    EXPECT_FALSE(factory->isRegistered(FactoryTestKey));
}

TEST(SceneElementFactory, UnknownKeysGiveNothingAndAreNotUnregistered)
{
    auto* factory = SceneElementFactory::getInstance();
    qel::test::LogCapture log;
    EXPECT_EQ(nullptr, factory->createElement("NoSuchType"));
    EXPECT_FALSE(factory->unregisterElement("NoSuchType"));
    EXPECT_TRUE(log.records().empty());

    EXPECT_TRUE(factory->registerElement(FactoryTestKey, &createSecond));
    EXPECT_TRUE(factory->unregisterElement(FactoryTestKey));
    EXPECT_FALSE(factory->isRegistered(FactoryTestKey));
    EXPECT_EQ(nullptr, factory->createElement(FactoryTestKey));
}
