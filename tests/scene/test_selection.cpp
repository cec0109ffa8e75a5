#include "eventrecorder.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/sceneevents.h"
#include "support/logcapture.h"
#include "testelement.h"

#include <cmath>
#include <future>
#include <limits>
#include <gtest/gtest.h>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

void select(const Scene::ElementList& elements)
{
    Scene::ElementList selection = elements;
    qel::main::Event event(SCENE_ELEMENTS_SELECTION, &selection, nullptr, false);
    qel::main::EventManager::getInstance()->fireEvent(event);
}

bool loggedOnce(const LogCapture& log, unsigned level, long line, const QString& function, const QString& text)
{
    return log.countExactly(level, "module_scene/scene", line, function, text) == 1;
}

} // namespace

TEST(SceneSelection, FocusRefusesNullAndUnfocusableElementsAndFiresOnlyOnAChange)
{
    SceneHolder scene;
    Element first = make("First");
    Element second = make("Second");
    Element stiff = make("Stiff");
    stiff->m_isFocusable = false;
    scene->addElement(first);
    scene->addElement(second);
    scene->addElement(stiff);
    LogCapture log;
    EventRecorder events{SCENE_ELEMENT_FOCUSED};

    scene->setFocus(nullptr);
    scene->setFocus(stiff);
    scene->setFocus(make("Stranger"));
    EXPECT_TRUE(loggedOnce(log, 1000, 434, "qel::scene::Scene::setFocus", "Scene::setFocus: element is NULL"));
    EXPECT_TRUE(loggedOnce(log, 2000, 441, "qel::scene::Scene::setFocus",
                           "Scene::setFocus: Element 'Stiff' is not focusable!"));
    EXPECT_TRUE(events.records.empty());

    scene->setFocus(first);
    scene->setFocus(first);
    ASSERT_EQ(1u, events.records.size());
    EXPECT_EQ(first.get(), events.records[0].data);
    EXPECT_EQ(scene.get(), events.records[0].source);
    EXPECT_EQ(first.get(), scene->getFocusedNode().get());
    EXPECT_TRUE(first->isFocused());
    EXPECT_TRUE(scene->isElementSelected(first));

    scene->setFocus(second);
    EXPECT_FALSE(first->isFocused());
    EXPECT_TRUE(second->isFocused());
    EXPECT_EQ(Scene::ElementList{second}, scene->getSelectedElements());
}

TEST(SceneSelection, SeveralSelectedElementsGoToTheSelectionNodeWithoutTheRoot)
{
    SceneHolder scene;
    Element a = make("A");
    Element b = make("B");
    Element parent = make("Parent");
    Element c = make("C");
    parent->addChild(c);
    scene->addElement(a);
    scene->addElement(b);
    scene->addElement(parent);
    scene->setFocus(a);
    EventRecorder events{SCENE_ELEMENT_FOCUSED};

    const Scene::ElementList selection{a, b, c, scene->getRootNode()};
    select(selection);

    const auto& node = scene->getSelectionNode();
    EXPECT_EQ(node.get(), scene->getFocusedNode().get());
    EXPECT_EQ(selection, scene->getSelectedElements());
    EXPECT_EQ((Scene::ElementList{a, b, c}), *node->getChilds());
    EXPECT_EQ(parent.get(), c->getParentSceneElement().get());
    EXPECT_EQ(scene->getRootNode().get(), a->getParentSceneElement().get());
    EXPECT_TRUE(node->isFocused());
    EXPECT_FALSE(a->isFocused());
    ASSERT_EQ(1u, events.records.size());
    EXPECT_EQ(node.get(), events.records[0].data);

    // While the selection node has the focus, the scene's own focus requests change nothing.
    scene->setFocus(b);
    EXPECT_EQ(node.get(), scene->getFocusedNode().get());
    EXPECT_EQ(3u, node->getChilds()->size());

    // One element takes the focus itself; none leaves it empty.
    select({b});
    EXPECT_EQ(b.get(), scene->getFocusedNode().get());
    EXPECT_TRUE(node->getChilds()->empty());
    EXPECT_FALSE(node->isFocused());
    select({});
    EXPECT_TRUE(scene->getFocusedNode().isNull());
    EXPECT_TRUE(scene->getSelectedElements().empty());
}

TEST(SceneSelection, FocusEventsFromOutsideMoveTheFocus)
{
    SceneHolder scene;
    Element a = make("A");
    Element b = make("B");
    scene->addElement(a);
    scene->addElement(b);
    select({a, b});
    int outsider = 0;
    qel::main::Event event(SCENE_ELEMENT_FOCUSED, a.get(), &outsider, false);
    qel::main::EventManager::getInstance()->fireEvent(event);
    EXPECT_EQ(a.get(), scene->getFocusedNode().get());
    EXPECT_TRUE(scene->getSelectionNode()->getChilds()->empty());
    EXPECT_EQ(Scene::ElementList{a}, scene->getSelectedElements());
}

TEST(SceneSelection, SelectionModesHaveNonZeroIdsAndUnknownOnesAreRefused)
{
    SceneHolder scene;
    const unsigned elements = scene->registerSelectionMode("selectsceneelements", Scene::SELECT_ELEMENTS);
    const unsigned points = scene->registerSelectionMode("selectpoint", Scene::SELECT_POINTS);
    EXPECT_NE(0u, elements);
    EXPECT_NE(elements, points);
    EXPECT_EQ(Scene::SELECT_NOTHING, scene->getCurrentSelectionType());
    EXPECT_TRUE(scene->getCurrentSelectionCommand().isEmpty());

    scene->switchSelectionMode(points);
    EXPECT_EQ("selectpoint", scene->getCurrentSelectionCommand());
    EXPECT_EQ(Scene::SELECT_POINTS, scene->getCurrentSelectionType());

    LogCapture log;
    unsigned unknown = 1;
    while (unknown == elements || unknown == points)
        ++unknown;
    scene->switchSelectionMode(unknown);
    EXPECT_TRUE(loggedOnce(log, 1000, 1378, "qel::scene::Scene::switchSelectionMode",
                           "Selection mode is not registered!"));
    EXPECT_EQ(Scene::SELECT_POINTS, scene->getCurrentSelectionType());

    scene->switchSelectionMode(0);
    EXPECT_EQ(Scene::SELECT_NOTHING, scene->getCurrentSelectionType());
}

TEST(SceneLocks, TransformAndStructureLocksCountAndFireAtTheEdgesOnly)
{
    SceneHolder scene;
    EventRecorder events{SCENE_TRANSFORM_LOCKED, SCENE_TRANSFORM_UNLOCKED, SCENE_STRUCTURE_LOCKED,
                         SCENE_STRUCTURE_UNLOCKED};
    std::vector<bool> structureData;
    events.onEvent = [&structureData](const qel::main::Event* event) {
        if (event->getID() == SCENE_STRUCTURE_LOCKED || event->getID() == SCENE_STRUCTURE_UNLOCKED)
            structureData.push_back(*static_cast<bool*>(event->getData()));
    };

    scene->transformLock();
    scene->transformLock();
    EXPECT_TRUE(scene->isTransformLocked());
    scene->transformUnlock();
    EXPECT_TRUE(scene->isTransformLocked());
    EXPECT_EQ(QStringList{"SCENE_TRANSFORM_LOCKED"}, events.names());
    scene->transformUnlock();
    EXPECT_FALSE(scene->isTransformLocked());
    EXPECT_EQ((QStringList{"SCENE_TRANSFORM_LOCKED", "SCENE_TRANSFORM_UNLOCKED"}), events.names());
    EXPECT_EQ(nullptr, events.records[0].data);

    scene->structureLock();
    scene->structureUnlock();
    EXPECT_EQ((std::vector<bool>{true, false}), structureData);
    EXPECT_FALSE(lockedElsewhere(scene.get()));

    // An unlock without a lock takes the count below zero: the next lock fires nothing.
    events.clear();
    scene->structureUnlock();
    scene->structureLock();
    EXPECT_TRUE(events.records.empty());
    EXPECT_TRUE(scene->isStructureLocked());
}

namespace {

// Takes all three locks and leaves early; records what another thread sees at each event.
void moveWithEarlyReturn(Scene* scene, QStringList& seen)
{
    SceneLocker locker(scene, SceneLocker::LOCK_ALL);
    seen << "body";
    if (scene->isStructureLocked())
        return;
    seen << "not reached";
}

} // namespace

TEST(SceneLocks, TheLockerReleasesInReverseOrderAlsoOnAnEarlyReturn)
{
    SceneHolder scene;
    QStringList seen;
    EventRecorder events{SCENE_TRANSFORM_LOCKED, SCENE_TRANSFORM_UNLOCKED, SCENE_STRUCTURE_LOCKED,
                         SCENE_STRUCTURE_UNLOCKED};
    events.onEvent = [&](const qel::main::Event* event) {
        seen << qel::events::EventHandler::getInstance()->getEventName(event->getID()) +
                    (lockedElsewhere(scene.get()) ? "+element" : "");
    };

    moveWithEarlyReturn(scene.get(), seen);

    EXPECT_EQ((QStringList{"SCENE_TRANSFORM_LOCKED+element", "SCENE_STRUCTURE_LOCKED+element", "body",
                           "SCENE_STRUCTURE_UNLOCKED+element", "SCENE_TRANSFORM_UNLOCKED+element"}),
              seen);
    EXPECT_FALSE(lockedElsewhere(scene.get()));
    EXPECT_FALSE(scene->isTransformLocked());
    EXPECT_FALSE(scene->isStructureLocked());
}

TEST(SceneLocks, TheLockerReleasesAtTheEndOnlyWhenLockedExactlyOnce)
{
    SceneHolder scene;
    {
        SceneLocker locker(scene.get(), SceneLocker::LOCK_TRANSFORM);
        locker.lock();
        locker.unlock();
        EXPECT_TRUE(scene->isTransformLocked());
    }
    EXPECT_FALSE(scene->isTransformLocked());
    {
        SceneLocker locker(scene.get(), SceneLocker::LOCK_ELEMENTS);
        locker.unlock();
        EXPECT_FALSE(lockedElsewhere(scene.get()));
    }
    EXPECT_FALSE(lockedElsewhere(scene.get()));
}

TEST(SceneScale, MeasuringRefusesZeroAndTellsLinesElements)
{
    SceneHolder scene;
    ZPointer<qel::test::RecomputedTestElement> lines(new qel::test::RecomputedTestElement("Lines"));
    scene->addElement(lines);
    scene->setChanged(false);
    LogCapture log;
    EventRecorder events{SCENE_MEASURING_CHANGED};
    std::vector<double> told;
    events.onEvent = [&told](const qel::main::Event* event) { told.push_back(*static_cast<double*>(event->getData())); };

    scene->setMeasuring(0.0);
    EXPECT_TRUE(loggedOnce(log, 2000, 548, "qel::scene::Scene::setMeasuring", "Measuring cannot be 0.0"));
    EXPECT_EQ(1.0, scene->getMeasuring());
    EXPECT_FALSE(scene->isChanged());
    EXPECT_EQ(0, lines->updates);

    // A negative or non-finite measure would mirror or wipe out every shown coordinate.
    for (double bad : {-25.4, std::numeric_limits<double>::infinity(), std::nan("")}) {
        log.clear();
        scene->setMeasuring(bad);
        EXPECT_EQ(1, log.count("Measuring must be a finite positive number", 2000)) << bad;
    }
    EXPECT_EQ(1.0, scene->getMeasuring());
    EXPECT_TRUE(told.empty());
    EXPECT_FALSE(scene->isChanged());

    scene->setMeasuring(25.4);
    EXPECT_EQ(25.4, scene->getMeasuring());
    EXPECT_EQ(std::vector<double>{25.4}, told);
    EXPECT_EQ(1, lines->updates);
    EXPECT_TRUE(scene->isChanged());
}

TEST(SceneScale, TheLargestModelSetsTheScaleAndEveryElementFollows)
{
    SceneHolder scene;
    EventRecorder events{SCENE_GLOBALSCALING_CHANGED};
    std::vector<double> told;
    events.onEvent = [&told](const qel::main::Event* event) { told.push_back(*static_cast<double*>(event->getData())); };
    Element boxless = make("Boxless");
    scene->addElement(boxless);
    EXPECT_EQ(1.0, scene->getGlobalScalingFactor());

    auto small = makeModel("Small", 6.0, 8.0);
    scene->addElement(small);
    EXPECT_DOUBLE_EQ(10.0, scene->getGlobalScalingFactor());
    EXPECT_DOUBLE_EQ(100.0, small->getBoundingBox(true).size.length());
    EXPECT_DOUBLE_EQ(10.0, boxless->getScalingFactor());
    EXPECT_DOUBLE_EQ(10.0, scene->getRootNode()->getScalingFactor());

    auto large = makeModel("Large", 12.0, 16.0);
    scene->addElement(large);
    EXPECT_DOUBLE_EQ(5.0, scene->getGlobalScalingFactor());
    EXPECT_DOUBLE_EQ(50.0, small->getBoundingBox(true).size.length());

    scene->setScaleMode(Scene::SCALE_BY_SMALLEST);
    EXPECT_DOUBLE_EQ(10.0, scene->getGlobalScalingFactor());

    // Forcing touches no element; the next update overrides it.
    scene->forceScaleFactor(3.0);
    EXPECT_DOUBLE_EQ(10.0, small->getScalingFactor());
    scene->forceScaleFactor(3.0);
    scene->removeElement(large);
    EXPECT_DOUBLE_EQ(10.0, scene->getGlobalScalingFactor());
    scene->removeElement(small);
    EXPECT_EQ(1.0, scene->getGlobalScalingFactor());
    EXPECT_EQ((std::vector<double>{10.0, 5.0, 10.0, 3.0, 10.0, 1.0}), told);
}
