// The measure of the scene and the measure system, set by command strings.
#include "commandfixture.h"
#include "kernel/main/abstractparameter.h"
#include "module_scene/measuresystem.h"
#include "module_scene/sceneevents.h"
#include "scene/eventrecorder.h"
#include "support/logcapture.h"

#include <QSettings>
#include <cmath>

using namespace qel::test;
using qel::util::MeasureSystem;

namespace {

QSettings* settings()
{
    return qel::main::Overseer::getInstance()->getQSettings();
}

QString consoleText()
{
    return qel::main::Overseer::getInstance()->getOutputConsole()->getText();
}

QString defaultOf(qel::main::Command* command, int set, size_t parameter)
{
    return command->getParameterSetByID(set)->getParameter(parameter)->getDefaultText();
}

} // namespace

TEST_F(CommandTest, MeasureSetsTheSceneMeasureAndRefusesZero)
{
    EventRecorder events({qel::scene::SCENE_MEASURING_CHANGED});
    ASSERT_TRUE(run("measure(2.5)"));
    EXPECT_EQ(2.5, scene()->getMeasuring());
    EXPECT_EQ(1u, events.records.size());

    LogCapture log;
    ASSERT_TRUE(run("measure(0)"));
    ASSERT_TRUE(run("measure(1e-13)"));
    EXPECT_EQ(2, log.count("Measure value cannot be 0 - ignoring.", 2000));
    EXPECT_EQ(2.5, scene()->getMeasuring());
    EXPECT_EQ(1u, events.records.size());
}

TEST_F(CommandTest, MeasureFromAUnitLineBetweenTwoPoints)
{
    ASSERT_TRUE(run("measure(10,[1,1,1],[4,5,1])"));
    EXPECT_EQ(2.0, scene()->getMeasuring());

    LogCapture log;
    ASSERT_TRUE(run("measure(10,[0,0],[1,1,1])"));
    EXPECT_EQ(1, log.count("Invalid size (2) of vector 1 found", 2000));
    ASSERT_TRUE(run("measure(10,[0,0,0],[1,1,1,1])"));
    EXPECT_EQ(1, log.count("Invalid size (4) of vector 2 found", 2000));
    ASSERT_TRUE(run("measure(0,[0,0,0],[1,0,0])"));
    EXPECT_EQ(1, log.count("Measure results to 0 - ignoring.", 2000));
    EXPECT_EQ(2.0, scene()->getMeasuring());

}

// A measure that is negative, infinite or NaN would mirror or wipe out every shown
// coordinate: each is refused with one line and the measure stays.
TEST_F(CommandTest, MeasuresThatAreNotFinitePositiveNumbersAreRefusedWithOneLine)
{
    ASSERT_TRUE(run("measure(2.5)"));
    EventRecorder events({qel::scene::SCENE_MEASURING_CHANGED});
    for (const char* command : {"measure(-2)", "measure(50,[0,0,0],[0,0,0])", "measure(0,[0,0,0],[0,0,0])",
                                "measure(-10,[0,0,0],[1,0,0])"}) {
        LogCapture log;
        run(command);
        int consoleLines = 0;
        for (const qel::log::LogRecord& record : log.records())
            consoleLines += record.level <= 2000 ? 1 : 0;
        EXPECT_EQ(1, consoleLines) << command;
        EXPECT_TRUE(log.contains("Measuring must be a finite positive number", 2000)) << command;
        EXPECT_EQ(2.5, scene()->getMeasuring()) << command;
    }
    EXPECT_TRUE(events.records.empty());
}

TEST_F(CommandTest, TwoPickedPointsBecomeTheDialogsLineEnds)
{
    qel::main::Command* measure = prototype("measure");
    ASSERT_NE(nullptr, measure);
    scene()->addSelectedPoint(qel::scene::Scene::Vector4(1, 2, 3, 1));
    EXPECT_EQ("", defaultOf(measure, 1, 1));
    scene()->addSelectedPoint(qel::scene::Scene::Vector4(4.5, 0, -1, 1));
    EXPECT_EQ("[1,2,3]", defaultOf(measure, 1, 1));
    EXPECT_EQ("[4.5,0,-1]", defaultOf(measure, 1, 2));
    scene()->addSelectedPoint(qel::scene::Scene::Vector4(0, 0, 0, 1));
    EXPECT_EQ("", defaultOf(measure, 1, 1));
    EXPECT_EQ("", defaultOf(measure, 1, 2));
    scene()->clearSelectedPoints();
}

TEST_F(CommandTest, MeasureSystemSwitchesBetweenMetricAndImperial)
{
    MeasureSystem* system = MeasureSystem::getInstance();
    EventRecorder events({qel::scene::SETTINGS_CHANGED});

    ASSERT_TRUE(run("measuresystem(0)"));
    EXPECT_FALSE(settings()->value("settings/metricsystem").toBool());
    EXPECT_FALSE(system->isMetric());
    EXPECT_EQ(1u, events.records.size());
    EXPECT_DOUBLE_EQ(1.0, system->measure(25.4));
    EXPECT_DOUBLE_EQ(25.4, system->unmeasure(1.0));
    EXPECT_EQ("inch", system->getMeasureExtension());
    EXPECT_EQ("sq in", system->getMeasureQuadricExtension());
    EXPECT_EQ("Imperial system", defaultOf(prototype("measuresystem"), 0, 0));

    // A value that is neither 0 nor 1 is refused on the console and leaves the setting.
    ASSERT_TRUE(run("measuresystem(2)"));
    EXPECT_TRUE(consoleText().contains("Only 1(metric) or 0(imperial) are valid inputs"));
    EXPECT_FALSE(settings()->value("settings/metricsystem").toBool());
    EXPECT_EQ(1u, events.records.size());

    ASSERT_TRUE(run("measuresystem(1)"));
    EXPECT_TRUE(system->isMetric());
    EXPECT_EQ(25.4, system->measure(25.4));
    EXPECT_EQ("mm", system->getMeasureExtension());
    EXPECT_EQ("qmm", system->getMeasureQuadricExtension());
    EXPECT_EQ("Metric system", defaultOf(prototype("measuresystem"), 0, 0));

    // The system follows the setting when another writer announces it.
    settings()->setValue("settings/metricsystem", false);
    qel::main::Event changed(qel::scene::SETTINGS_CHANGED, nullptr, nullptr, false);
    qel::main::EventManager::getInstance()->fireEvent(changed);
    EXPECT_FALSE(system->isMetric());
    EXPECT_DOUBLE_EQ(2.0, MeasureSystem::toImperial(50.8));
    EXPECT_DOUBLE_EQ(50.8, MeasureSystem::toMetric(2.0));
    ASSERT_TRUE(run("measuresystem(1)"));
}
