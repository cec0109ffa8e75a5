#include "eventrecorder.h"
#include "module_scene/multipleelementsselection.h"
#include "module_scene/scene.h"
#include "module_scene/scenecoordinatesystem.h"
#include "module_scene/sceneevents.h"
#include "support/logcapture.h"
#include "testelement.h"

#include <boost/function.hpp>
#include <cstdio>
#include <future>
#include <iterator>
#include <gtest/gtest.h>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

void expectLogged(const LogCapture& log, int level, long line, const char* function, const QString& text)
{
    EXPECT_EQ(1, log.countExactly(static_cast<unsigned int>(level), "module_scene/scene", line, function, text))
        << qPrintable(text);
}

} // namespace

TEST(SceneRegistry, ANewSceneHoldsRootAndSelectionNodeAndIsCleanButChanged)
{
    SceneHolder scene;
    const Scene::ElementList& elements = *scene->getElementList();
    ASSERT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection"}), namesOf(elements));
    const auto& root = scene->getRootNode();
    EXPECT_EQ(typeid(SceneCoordinateSystem), typeid(*root));
    EXPECT_EQ(root.get(), scene->getSelectionNode()->getParentSceneElement().get());
    EXPECT_TRUE(scene->getSelectionNode()->isInternal());
    EXPECT_TRUE(scene->isClean());
    EXPECT_TRUE(scene->isChanged());

    scene->addElement(make("Model"));
    EXPECT_FALSE(scene->isClean());
    ZPointer<TestElement> helper(new TestElement("helper"));
    helper->m_isInternal = true;
    scene->cleanScene();
    scene->addElement(helper);
    EXPECT_TRUE(scene->isClean());
}

TEST(SceneRegistry, CollidingNamesBecomeFreeNames)
{
    SceneHolder scene;
    for (int i = 0; i < 3; ++i)
        scene->addElement(make("Model"));
    scene->addElement(make("Plane_1"));
    scene->addElement(make("Plane_1"));
    scene->addElement(make("Coordinatesystem"));
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection", "Model", "Model_1", "Model_2", "Plane_1",
                           "Plane_1_1", "Coordinatesystem_1"}),
              namesOf(*scene->getElementList()));
    EXPECT_FALSE(scene->isNameAvailable("Model_2"));
    EXPECT_TRUE(scene->isNameAvailable("Model_3"));

    // After the first collision the walk restarts behind the root: its name is missed.
    scene->getRootNode()->setName("Part_1");
    scene->addElement(make("Part"));
    scene->addElement(make("Part"));
    EXPECT_EQ("Part", std::prev(scene->getElementList()->end(), 2)->get()->getName());
    EXPECT_EQ("Part_1", scene->getElementList()->back()->getName());
}

TEST(SceneRegistry, AddingRegistersDirectChildsOnlyAndTellsInOrder)
{
    SceneHolder scene;
    scene->addElement(make("Child"));
    Element parent = make("Parent");
    Element first = make("Child");
    Element second = make("Other");
    Element grandchild = make("Grandchild");
    parent->addChild(first);
    parent->addChild(second);
    first->addChild(grandchild);

    QStringList order;
    auto note = [&order](const QString& what) {
        return [&order, what](SceneElement* element, void*) { order << what + ":" + element->getName(); };
    };
    scene->registerInitFunctionForElementTypeBeforeAdd("TestElement", [&](SceneElement* element, void*) {
        order << "before:" + element->getName();
        EXPECT_FALSE(scene->getSceneElement(element->getName()).isNull());
        EXPECT_TRUE(scene->isNameAvailable(element->getName()));
        EXPECT_FALSE(scene->isExisting(element));
    }, nullptr);
    scene->registerInitFunctionForElementName("Parent", note("name"), nullptr);
    scene->registerInitFunctionForElementType("TestElement", note("type"), nullptr);
    EventRecorder events{SCENE_ELEMENT_ADDED};
    events.onEvent = [&order](const qel::main::Event* event) {
        order << "event:" + static_cast<SceneElement*>(event->getData())->getName();
    };
    SceneNoticeRecorder notices(scene.get());
    notices.onNotice = [&order] { order << "observers"; };

    scene->addElement(parent);

    EXPECT_EQ((QStringList{"before:Parent", "name:Parent", "type:Parent", "event:Parent", "before:Child_1",
                           "type:Child_1", "event:Child_1", "before:Other", "type:Other", "event:Other", "observers"}),
              order);
    EXPECT_TRUE(scene->isExisting(first));
    EXPECT_FALSE(scene->isExisting(grandchild));
    EXPECT_EQ(scene->getRootNode().get(), parent->getParentSceneElement().get());
    ASSERT_EQ(1u, notices.notices.size());
    EXPECT_TRUE(notices.notices[0].hasRecord);
    EXPECT_EQ(Scene::ELEMENT_ADDED, notices.notices[0].record.operation);
    EXPECT_EQ(parent.get(), notices.notices[0].record.element);
    EXPECT_EQ(0u, notices.notices[0].record.reserved);
    EXPECT_EQ(Scene::CHANGE_STRUCTURE, notices.notices[0].changeCause);
    EXPECT_EQ(0, scene->getChangeCause());

    // Name functions are one-shot, type functions last.
    order.clear();
    scene->removeElement(parent);
    scene->addElement(make("Parent"));
    EXPECT_EQ((QStringList{"observers", "before:Parent", "type:Parent", "event:Parent", "observers"}), order);
}

TEST(SceneRegistry, RemovingTakesTheSubtreeDeepestFirstAndDropsTheFocusBeforeTheElement)
{
    SceneHolder scene;
    Element parent = make("Parent");
    Element child = make("Child");
    Element grandchild = make("Grandchild");
    parent->addChild(child);
    scene->addElement(parent);
    child->addChild(grandchild);
    scene->addElement(grandchild);
    scene->setFocus(child);
    ASSERT_EQ(child.get(), scene->getFocusedNode().get());
    scene->setChanged(false);

    EventRecorder events{SCENE_ELEMENT_REMOVED, SCENE_ELEMENT_FOCUSED};
    SceneNoticeRecorder notices(scene.get());
    bool lockedDuringNotice = true;
    notices.onNotice = [&] { lockedDuringNotice = lockedElsewhere(scene.get()); };
    scene->removeElement(parent);

    EXPECT_EQ((QStringList{"SCENE_ELEMENT_REMOVED", "SCENE_ELEMENT_FOCUSED", "SCENE_ELEMENT_REMOVED",
                           "SCENE_ELEMENT_REMOVED"}),
              events.names());
    EXPECT_EQ(grandchild.get(), events.records[0].data);
    EXPECT_EQ(nullptr, events.records[1].data);
    EXPECT_EQ(child.get(), events.records[2].data);
    EXPECT_EQ(parent.get(), events.records[3].data);
    for (const auto& record : events.records)
        EXPECT_EQ(scene.get(), record.source);
    EXPECT_TRUE(scene->getFocusedNode().isNull());
    EXPECT_FALSE(child->isFocused());
    EXPECT_TRUE(scene->getSelectedElements().empty());
    EXPECT_TRUE(scene->isChanged());
    EXPECT_EQ(2u, scene->getElementList()->size());
    EXPECT_TRUE(parent->getParentSceneElement().isNull());
    EXPECT_TRUE(parent->getChilds()->empty());

    // The focus change tells the observers plainly; the removal comes last, after the lock
    // is released.
    ASSERT_EQ(2u, notices.notices.size());
    EXPECT_FALSE(notices.notices[0].hasRecord);
    ASSERT_TRUE(notices.notices[1].hasRecord);
    EXPECT_EQ(Scene::ELEMENT_REMOVED, notices.notices[1].record.operation);
    EXPECT_EQ(parent.get(), notices.notices[1].record.element);
    EXPECT_FALSE(lockedDuringNotice);
}

TEST(SceneRegistry, TheStandingElementsCannotBeRemoved)
{
    SceneHolder scene;
    LogCapture log;
    EventRecorder events{SCENE_ELEMENT_REMOVED};
    scene->removeElement(scene->getRootNode());
    scene->removeElement(scene->getSelectionNode());
    expectLogged(log, 2000, 290, "qel::scene::Scene::removeElement", "You aren't allowed to remove the root node!");
    expectLogged(log, 2000, 295, "qel::scene::Scene::removeElement",
                 "You aren't allowed to remove the selection node!");
    EXPECT_TRUE(events.records.empty());
    EXPECT_EQ(2u, scene->getElementList()->size());
}

TEST(SceneRegistry, ClippingPlaneAndLightNumbersRunOutAndTheEighthLightCostsAPlane)
{
    SceneHolder scene;
    std::vector<ZPointer<NumberedTestElement>> planes;
    for (int i = 0; i < 7; ++i) {
        planes.emplace_back(new NumberedTestElement("Plane", Scene::ClippingPlaneType));
        scene->addElement(planes.back());
    }
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(i, planes[i]->number);
    EXPECT_EQ(-1, planes[6]->number);
    EXPECT_EQ(-1, scene->findFreeClippingPlaneNumber());
    scene->removeElement(planes[6]);
    EXPECT_EQ(-1, scene->findFreeClippingPlaneNumber());
    scene->removeElement(planes[2]);
    EXPECT_EQ(2, scene->findFreeClippingPlaneNumber());
    scene->removeElement(planes[5]);

    std::vector<ZPointer<NumberedTestElement>> lights;
    for (int i = 0; i < 8; ++i) {
        lights.emplace_back(new NumberedTestElement("Light", Scene::LightSourceType));
        scene->addElement(lights.back());
    }
    EXPECT_EQ(6, lights[6]->number);
    EXPECT_EQ(-1, lights[7]->number);
    EXPECT_EQ(-1, scene->findFreeLightSourceNumber());
    EXPECT_FALSE(scene->getAvailableClippingPlanes()[5]);
    EXPECT_EQ(2, scene->findFreeClippingPlaneNumber());

    // The type key decides: a subclass with a key of its own gets no number.
    ZPointer<NumberedTestElement> other(new NumberedTestElement("Other", "SceneSelectionPlane"));
    scene->addElement(other);
    EXPECT_EQ(-2, other->number);

    scene->cleanScene();
    EXPECT_EQ(0, scene->findFreeClippingPlaneNumber());
    EXPECT_EQ(0, scene->findFreeLightSourceNumber());
}

TEST(SceneRegistry, InitFunctionsByNameAreForgottenWithTheirElementAndEmptyOnesThrow)
{
    SceneHolder scene;
    int calls = 0;
    scene->addElement(make("Late"));
    scene->registerInitFunctionForElementName("Late", [&calls](SceneElement*, void*) { ++calls; }, nullptr);
    scene->removeElement(scene->getSceneElement("Late"));
    scene->addElement(make("Late"));
    EXPECT_EQ(0, calls);

    int data = 7;
    void* seen = nullptr;
    scene->registerInitFunctionForElementType("Typed", [&seen](SceneElement*, void* given) { seen = given; }, &data);
    scene->addElement(make("T", "Typed"));
    EXPECT_EQ(&data, seen);

    Element element = make("Empty", "EmptyType");
    scene->registerInitFunctionForElementType("EmptyType", Scene::InitFunction(), nullptr);
    EXPECT_THROW(scene->callInitFunctionsForElementType(element), boost::bad_function_call);
}

TEST(SceneRegistry, CleaningKeepsTheStandingElementsAndResetsTheNumbers)
{
    SceneHolder scene;
    scene->addElement(make("A"));
    scene->addElement(make("B"));
    scene->addSelectedPoint(Scene::Vector4(1.0, 2.0, 3.0, 1.0));
    scene->setMeasuring(25.4);
    scene->setScaleMode(Scene::SCALE_BY_SMALLEST);
    int calls = 0;
    scene->registerInitFunctionForElementName("C", [&calls](SceneElement*, void*) { ++calls; }, nullptr);
    EventRecorder events{SCENE_ELEMENT_REMOVED, POINTS_DESELECTED};
    QStringList removed;
    events.onEvent = [&removed](const qel::main::Event* event) {
        if (event->getData() && event->getID() == SCENE_ELEMENT_REMOVED)
            removed << static_cast<SceneElement*>(event->getData())->getName();
    };

    scene->cleanScene();

    EXPECT_EQ((QStringList{"SCENE_ELEMENT_REMOVED", "SCENE_ELEMENT_REMOVED", "POINTS_DESELECTED"}), events.names());
    EXPECT_EQ((QStringList{"B", "A"}), removed);
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection"}), namesOf(*scene->getElementList()));
    EXPECT_TRUE(scene->getSelectedPoints()->empty());
    EXPECT_EQ(1.0, scene->getMeasuring());
    EXPECT_EQ(Scene::SCALE_BY_SMALLEST, scene->getScaleMode());
    EXPECT_FALSE(scene->isChanged());
    scene->addElement(make("C"));
    EXPECT_EQ(1, calls);

    scene->clearScene();
    EXPECT_TRUE(scene->getRootNode().isNull());
    EXPECT_TRUE(scene->getSelectionNode().isNull());
    EXPECT_TRUE(scene->getElementList()->empty());
    EXPECT_TRUE(scene->isClean());
}

TEST(SceneRegistry, ANewRootTakesItsTreeAsItIsAndDefersWhatIsAddedMeanwhile)
{
    SceneHolder scene;
    LogCapture log;
    scene->addElement(make("Kept"));
    scene->setRootNode(make("Model"));
    expectLogged(log, 1000, 828, "qel::scene::Scene::setRootNode",
                 "Scene::setRootNode root nodes needs to be a CoordinateSystem!");
    EXPECT_EQ(3u, scene->getElementList()->size());

    ZPointer<SceneElement> root(new SceneCoordinateSystem);
    ZPointer<SceneElement> selection(new MultipleElementsSelection);
    Element a = make("A");
    Element twin = make("A");
    ZPointer<RecomputedTestElement> lines(new RecomputedTestElement("Lines"));
    root->addChild(a);
    root->addChild(selection);
    a->addChild(twin);
    a->addChild(lines);
    int nameCalls = 0;
    scene->registerInitFunctionForElementName("Never", [&nameCalls](SceneElement*, void*) { ++nameCalls; }, nullptr);

    Element late = make("A");
    bool added = false;
    EventRecorder events{SCENE_ELEMENT_ADDED};
    events.onEvent = [&](const qel::main::Event*) {
        if (added)
            return;
        added = true;
        scene->addElement(late);
        EXPECT_TRUE(scene->getSceneElement("A_1").isNull());
    };
    scene->setRootNode(root);

    EXPECT_EQ((QStringList{"Coordinatesystem", "A", "A", "Lines", "MultipleElementsSelection", "A_1"}),
              namesOf(*scene->getElementList()));
    EXPECT_EQ(root.get(), scene->getRootNode().get());
    EXPECT_EQ(selection.get(), scene->getSelectionNode().get());
    EXPECT_EQ(root.get(), late->getParentSceneElement().get());
    EXPECT_EQ(1, lines->updates);
    EXPECT_FALSE(scene->isChanged());
    scene->addElement(make("Never"));
    EXPECT_EQ(0, nameCalls);

    // Without a selection node in the tree a new one joins the root.
    ZPointer<SceneElement> bare(new SceneCoordinateSystem);
    scene->setRootNode(bare);
    ASSERT_FALSE(scene->getSelectionNode().isNull());
    EXPECT_EQ(bare.get(), scene->getSelectionNode()->getParentSceneElement().get());
    EXPECT_EQ(2u, scene->getElementList()->size());
}

TEST(SceneRegistry, ReorderedChildsMoveToTheEndOfTheRegistryExceptTheRootOnes)
{
    SceneHolder scene;
    Element parent = make("P");
    Element first = make("First");
    Element second = make("Second");
    parent->addChild(first);
    parent->addChild(second);
    scene->addElement(parent);
    scene->addElement(make("Z"));

    parent->reorderChilds(Scene::ElementList{second});
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection", "P", "Z", "Second", "First"}),
              namesOf(*scene->getElementList()));

    LogCapture log;
    scene->getRootNode()->reorderChilds(Scene::ElementList{});
    expectLogged(log, 2000, 712, "qel::scene::Scene::childElementsReordered",
                 "Element 'Coordinatesystem' is not a (sub-)child of the rootnode");
    EXPECT_EQ("First", scene->getElementList()->back()->getName());
}

TEST(SceneRegistry, OnlyTransformsOfElementsMarkTheSceneChanged)
{
    SceneHolder scene;
    Element element = make("E");
    scene->addElement(element);
    scene->setChanged(false);
    SceneNoticeRecorder notices(scene.get());

    element->setOpacity(0.5);
    EXPECT_FALSE(scene->isChanged());
    element->setTransformMatrix(SceneElement::Matrix4::translation(1.0, 0.0, 0.0));
    EXPECT_TRUE(scene->isChanged());
    ASSERT_EQ(2u, notices.notices.size());
    EXPECT_FALSE(notices.notices[0].hasRecord);
    EXPECT_EQ(Scene::CHANGE_ELEMENT, notices.notices[1].changeCause);

    scene->removeElement(element);
    notices.notices.clear();
    element->setOpacity(0.2);
    EXPECT_TRUE(notices.notices.empty());
}

TEST(SceneRegistry, TheTreeDumpNamesEveryElementAndItsParent)
{
    SceneHolder scene;
    Element model = make("Model");
    scene->addElement(model);
    // As the log formats it.
    const auto pointer = [](const void* address) {
        char text[32];
        std::snprintf(text, sizeof text, "%p", address);
        return QString(text);
    };
    const QString root = pointer(scene->getRootNode().get());
    LogCapture log;

    scene->dumpTree();

    QStringList lines;
    for (const auto& record : log.records()) {
        EXPECT_EQ(4000u, record.level);
        EXPECT_EQ("qel::scene::Scene::dumpTree", record.function);
        lines << QString::number(record.line) + "|" + record.text;
    }
    const QString selection = pointer(scene->getSelectionNode().get());
    const QString element = pointer(model.get());
    EXPECT_EQ((QStringList{"652|ElementList [# 3]", "653|====================",
                           "656|Coordinatesystem (" + root + ")", "656|MultipleElementsSelection (" + selection + ")",
                           "656|Model (" + element + ")", "658|", "659|Tree", "660|====",
                           "673|Coordinatesystem (" + root + ") [# childs: 2, parent:  (" + pointer(nullptr) + ")]",
                           "673|\tMultipleElementsSelection (" + selection + ") [# childs: 0, parent: Coordinatesystem (" +
                               root + ")]",
                           "673|\tModel (" + element + ") [# childs: 0, parent: Coordinatesystem (" + root + ")]"})
                  .join("\n")
                  .toStdString(),
              lines.join("\n").toStdString());
}

TEST(SceneRegistry, AFreeNameIsGivenBeforeTheAddAndReparentingKeepsTheRegistry)
{
    SceneHolder scene;
    Element first = make("Model");
    Element second = make("Model");
    scene->addElement(first);
    EventRecorder events{SCENE_ELEMENT_RENAMED, SCENE_ELEMENT_ADDED, SCENE_ELEMENT_CHILD_REMOVED,
                         SCENE_ELEMENT_CHILD_ADDED, SCENE_ELEMENTS_REPARENTED};
    QString oldName;
    events.onEvent = [&oldName](const qel::main::Event* event) {
        if (event->getID() == SCENE_ELEMENT_RENAMED)
            oldName = *static_cast<QString*>(event->getData());
    };

    scene->addElement(second);
    // The element joins the root after the scene announced it.
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_RENAMED", "SCENE_ELEMENT_ADDED", "SCENE_ELEMENT_CHILD_ADDED"}),
              events.names());
    EXPECT_EQ("Model", oldName);
    EXPECT_EQ(second.get(), events.records[0].source);
    EXPECT_EQ(scene->getRootNode().get(), events.records[2].source);

    events.clear();
    first->addChild(second);
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_CHILD_REMOVED", "SCENE_ELEMENT_CHILD_ADDED", "SCENE_ELEMENTS_REPARENTED"}),
              events.names());
    EXPECT_EQ(scene->getRootNode().get(), events.records[0].source);
    EXPECT_EQ(first.get(), events.records[2].source);
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection", "Model", "Model_1"}),
              namesOf(*scene->getElementList()));
}

TEST(SceneRegistry, RegisteringTwiceChangesNothingButKeepsALevelOfTheLock)
{
    SceneHolder scene;
    Element element = make("Model");
    SceneNoticeRecorder notices(scene.get());
    bool lockedDuringNotice = false;
    notices.onNotice = [&] { lockedDuringNotice = lockedElsewhere(scene.get()); };
    scene->addElement(element);
    EXPECT_TRUE(lockedDuringNotice);
    EXPECT_FALSE(lockedElsewhere(scene.get()));

    EventRecorder events{SCENE_ELEMENT_ADDED, SCENE_ELEMENT_RENAMED};
    scene->addElement(element);
    EXPECT_TRUE(events.records.empty());
    EXPECT_EQ(1u, notices.notices.size());
    EXPECT_EQ("Model", element->getName());
    EXPECT_EQ(3u, scene->getElementList()->size());
    // The level left behind shows up as a stall for other threads.
    EXPECT_TRUE(lockedElsewhere(scene.get()));
    scene->unlock();
    EXPECT_FALSE(lockedElsewhere(scene.get()));
}

TEST(SceneRegistry, FreeNamesFollowRenamesAndRemovals)
{
    SceneHolder scene;
    Element first = make("Model");
    scene->addElement(first);
    for (int i = 0; i < 3; ++i)
        scene->addElement(make("Model"));
    scene->removeElement(scene->getSceneElement("Model_1"));
    // The lowest free number is taken again, the others stay taken.
    scene->addElement(make("Model"));
    EXPECT_EQ("Model_1", scene->getElementList()->back()->getName());
    scene->addElement(make("Model"));
    EXPECT_EQ("Model_4", scene->getElementList()->back()->getName());

    // A renamed element is found by its new name only, and its old name is free.
    first->setName("Renamed");
    EXPECT_EQ(first.get(), scene->getSceneElement("Renamed").get());
    EXPECT_TRUE(scene->isNameAvailable("Model"));
    EXPECT_FALSE(scene->isNameAvailable("Renamed"));
    scene->addElement(make("Model"));
    EXPECT_EQ("Model", scene->getElementList()->back()->getName());
    scene->addElement(make("Renamed"));
    EXPECT_EQ("Renamed_1", scene->getElementList()->back()->getName());
    scene->getSceneElement("Model_2")->setName("Other");
    scene->addElement(make("Model"));
    EXPECT_EQ("Model_2", scene->getElementList()->back()->getName());

    // A removed element takes its name along.
    scene->removeElement(first);
    EXPECT_TRUE(scene->getSceneElement("Renamed").isNull());
    EXPECT_TRUE(scene->isNameAvailable("Renamed"));
}

TEST(SceneRegistry, ManyAlikeNamesAreNumberedInOrderAndFoundByName)
{
    SceneHolder scene;
    const int count = 3000;
    for (int i = 0; i < count; ++i)
        scene->addElement(make("Part"));
    const Scene::ElementList& elements = *scene->getElementList();
    ASSERT_EQ(static_cast<size_t>(count) + 2, elements.size());
    int index = -2;
    for (const auto& element : elements) {
        if (index > 0) {
            EXPECT_EQ(QString("Part_%1").arg(index), element->getName());
        }
        ++index;
    }
    EXPECT_EQ("Part_2999", scene->getSceneElement("Part_2999")->getName());
    EXPECT_EQ("Part", scene->getSceneElement("Part")->getName());
    EXPECT_TRUE(scene->getSceneElement("Part_3000").isNull());
}

// A removed element leaves the selection with it: a later removal or clearing of the
// selection node must not remove it a second time.
TEST(SceneRegistry, CleaningASceneWithASelectionRemovesEachElementOnce)
{
    SceneHolder scene;
    Element a = make("A");
    Element b = make("B");
    Element child = make("Child");
    a->addChild(child);
    scene->addElement(a);
    scene->addElement(b);
    Scene::ElementList selection{a, b};
    qel::main::Event select(SCENE_ELEMENTS_SELECTION, &selection, nullptr, false);
    qel::main::EventManager::getInstance()->fireEvent(select);
    ASSERT_EQ(2u, scene->getSelectionNode()->getChilds()->size());

    EventRecorder events{SCENE_ELEMENT_REMOVED};
    QStringList removed;
    events.onEvent = [&removed](const qel::main::Event* event) {
        removed << static_cast<SceneElement*>(event->getData())->getName();
    };
    scene->cleanScene();
    EXPECT_EQ((QStringList{"B", "Child", "A"}), removed);
    EXPECT_TRUE(scene->getSelectionNode()->getChilds()->empty());
    EXPECT_TRUE(scene->getSelectedElements().empty());
    scene->clearScene();
    EXPECT_EQ((QStringList{"B", "Child", "A", "MultipleElementsSelection"}), removed);
}

// The functions of a name run before their entry goes; what they register for the name
// meanwhile goes with it.
TEST(SceneRegistry, InitFunctionsOfANameRunAllAndThenTheirEntryGoes)
{
    SceneHolder scene;
    QStringList calls;
    scene->registerInitFunctionForElementName("Late", [&](SceneElement* element, void*) {
        calls << "first:" + element->getName();
        scene->registerInitFunctionForElementName("Late", [&calls](SceneElement*, void*) { calls << "again"; },
                                                  nullptr);
    }, nullptr);
    scene->registerInitFunctionForElementName("Late", [&calls](SceneElement*, void*) { calls << "second"; }, nullptr);
    Element late = make("Late");
    scene->addElement(late);
    EXPECT_EQ((QStringList{"first:Late", "second"}), calls);

    scene->callInitFunctionsForElementName(late.get());
    EXPECT_EQ((QStringList{"first:Late", "second"}), calls);
}
