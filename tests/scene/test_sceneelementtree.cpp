#include "eventrecorder.h"
#include "module_scene/sceneevents.h"
#include "testelement.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <gtest/gtest.h>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

// Breaks the parent links that keep a tree alive.
void dismantle(SceneElement* element)
{
    const SceneElement::ElementList childs = *element->getChilds();
    for (const auto& child : childs)
        dismantle(child);
    element->clearChilds();
}

} // namespace

TEST(SceneElementTree, AddingAChildTwiceKeepsOneEntryAndFiresOnce)
{
    Element parent = make("parent");
    Element child = make("child");
    EventRecorder events{SCENE_ELEMENT_CHILD_ADDED, SCENE_ELEMENTS_REPARENTED};

    parent->addChild(child);
    parent->addChild(child);

    EXPECT_EQ(1u, parent->getChilds()->size());
    EXPECT_EQ(parent.get(), child->getParentSceneElement().get());
    ASSERT_EQ(QStringList{"SCENE_ELEMENT_CHILD_ADDED"}, events.names());
    EXPECT_EQ(child.get(), events.records[0].data);
    EXPECT_EQ(parent.get(), events.records[0].source);
    EXPECT_TRUE(child->isChildOf(parent));
    parent->clearChilds();
}

TEST(SceneElementTree, MovingAChildTellsTheOldParentFirst)
{
    Element oldParent = make("old");
    Element newParent = make("new");
    Element child = make("child");
    oldParent->addChild(child);
    EventRecorder events{SCENE_ELEMENT_CHILD_ADDED, SCENE_ELEMENT_CHILD_REMOVED, SCENE_ELEMENTS_REPARENTED};

    newParent->addChild(child);

    EXPECT_EQ((QStringList{"SCENE_ELEMENT_CHILD_REMOVED", "SCENE_ELEMENT_CHILD_ADDED", "SCENE_ELEMENTS_REPARENTED"}),
              events.names());
    EXPECT_EQ(oldParent.get(), events.records[0].source);
    EXPECT_EQ(newParent.get(), events.records[1].source);
    EXPECT_EQ(newParent.get(), events.records[2].source);
    for (const auto& record : events.records)
        EXPECT_EQ(child.get(), record.data);
    EXPECT_TRUE(oldParent->getChilds()->empty());
    EXPECT_EQ(newParent.get(), child->getParentSceneElement().get());
    newParent->clearChilds();
}

TEST(SceneElementTree, GroupingWithoutParentLeavesTheChildWhereItIs)
{
    Element parent = make("parent");
    Element group = make("group");
    Element child = make("child");
    parent->addChild(child);
    EventRecorder events{SCENE_ELEMENT_CHILD_ADDED, SCENE_ELEMENT_CHILD_REMOVED, SCENE_ELEMENTS_REPARENTED};

    group->addChild(child, false);

    EXPECT_EQ(QStringList{"SCENE_ELEMENT_CHILD_ADDED"}, events.names());
    EXPECT_EQ(parent.get(), child->getParentSceneElement().get());
    EXPECT_TRUE(group->hasAsChild(child, false));
    EXPECT_TRUE(parent->hasAsChild(child, false));

    // Removing it from the group keeps the real parent as well.
    group->removeChild(child);
    EXPECT_EQ(parent.get(), child->getParentSceneElement().get());
    parent->clearChilds();
}

TEST(SceneElementTree, AParentWithoutChildEventsStaysSilent)
{
    Element selection = make("selection");
    selection->m_firesChildEvents = false;
    Element child = make("child");
    EventRecorder events{SCENE_ELEMENT_CHILD_ADDED, SCENE_ELEMENT_CHILD_REMOVED};
    selection->addChild(child);
    selection->removeChild(child);
    EXPECT_TRUE(events.records.empty());
    EXPECT_TRUE(child->getParentSceneElement().isNull());
}

TEST(SceneElementTree, RemovingTheLastReferenceKeepsTheChildAliveForTheEvent)
{
    Element parent = make("parent");
    auto* child = new TestElement("child");
    parent->addChild(child); // the list is the only owner
    QString seenName;
    EventRecorder events{SCENE_ELEMENT_CHILD_REMOVED, SCENE_ELEMENT_DELETED};
    events.onEvent = [&seenName](const qel::main::Event* event) {
        if (event->getID() == SCENE_ELEMENT_CHILD_REMOVED)
            seenName = static_cast<SceneElement*>(event->getData())->getName();
    };
    parent->removeChild(child);
    EXPECT_EQ("child", seenName);
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_CHILD_REMOVED", "SCENE_ELEMENT_DELETED"}), events.names());
}

TEST(SceneElementTree, UnchangedPropertiesFireNothing)
{
    Element element = make("name");
    CauseRecorder observer;
    element->attachObserver(&observer);
    EventRecorder events{SCENE_ELEMENT_RENAMED, SCENE_ELEMENT_SHOWN, SCENE_ELEMENT_HIDDEN, SCENE_ELEMENT_BBOX_SHOWN,
                         SCENE_ELEMENT_BBOX_HIDDEN};

    element->setName("name");
    element->setVisible(true);
    element->showBoundingBox(false);

    EXPECT_TRUE(events.records.empty());
    EXPECT_TRUE(observer.causes.empty());
    element->detachObserver(&observer);
}

TEST(SceneElementTree, ChangedPropertiesAreAnnounced)
{
    Element element = make("before");
    CauseRecorder observer;
    element->attachObserver(&observer);
    QString oldName;
    EventRecorder events{SCENE_ELEMENT_RENAMED, SCENE_ELEMENT_SHOWN, SCENE_ELEMENT_HIDDEN, SCENE_ELEMENT_BBOX_SHOWN,
                         SCENE_ELEMENT_BBOX_HIDDEN};
    events.onEvent = [&oldName](const qel::main::Event* event) {
        if (event->getID() == SCENE_ELEMENT_RENAMED)
            oldName = *static_cast<QString*>(event->getData());
    };

    element->setName("after");
    element->setVisible(false);
    element->setVisible(true);
    element->showBoundingBox(true);
    element->setOpacity(0.5);
    element->setOpacity(0.5); // no comparison: told again

    EXPECT_EQ("before", oldName);
    EXPECT_EQ("after", element->getName());
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_RENAMED", "SCENE_ELEMENT_HIDDEN", "SCENE_ELEMENT_SHOWN",
                           "SCENE_ELEMENT_BBOX_SHOWN"}),
              events.names());
    EXPECT_EQ(element.get(), events.records[1].data);
    EXPECT_EQ(element.get(), events.records[1].source);
    EXPECT_EQ(element.get(), events.records[3].data);
    EXPECT_EQ(nullptr, events.records[3].source);
    EXPECT_EQ(std::vector<int>(6, SceneElement::CHANGE_PROPERTY), observer.causes);
    element->detachObserver(&observer);
}

TEST(SceneElementTree, ReorderPutsTheNamedChildsFirstAndIgnoresStrangers)
{
    Element parent = make("parent");
    Element a = make("a");
    Element b = make("b");
    Element c = make("c");
    Element stranger = make("stranger");
    for (const Element& child : {a, b, c})
        parent->addChild(child);
    CauseRecorder observer;
    parent->attachObserver(&observer);
    EventRecorder events{SCENE_ELEMENT_CHILDS_REORDERED};

    parent->reorderChilds({c, stranger});
    EXPECT_EQ((QStringList{"c", "a", "b"}), namesOf(*parent->getChilds()));
    // Each named entry that is a child goes in as named, a repeated one as often.
    parent->reorderChilds({b, a, b});
    EXPECT_EQ((QStringList{"b", "a", "b", "c"}), namesOf(*parent->getChilds()));
    // The unnamed children follow once each, in their order.
    parent->reorderChilds({c});
    EXPECT_EQ((QStringList{"c", "b", "a"}), namesOf(*parent->getChilds()));

    ASSERT_EQ(3u, events.records.size());
    EXPECT_EQ(nullptr, events.records[0].data);
    EXPECT_EQ(parent.get(), events.records[0].source);
    EXPECT_EQ(std::vector<int>(3, SceneElement::CHANGE_PROPERTY), observer.causes);
    EXPECT_TRUE(stranger->getParentSceneElement().isNull());
    parent->detachObserver(&observer);
    parent->clearChilds();
}

TEST(SceneElementTree, SearchesGoDepthFirstInChildOrder)
{
    // root: [a:X [a1:Y "n" [a11:X], a2:X], b:X "n"]
    Element root = make("root", "Root");
    Element a = make("a", "X");
    Element a1 = make("n", "Y");
    Element a11 = make("a11", "X");
    Element a2 = make("a2", "X");
    Element b = make("n", "X");
    root->addChild(a);
    root->addChild(b);
    a->addChild(a1);
    a->addChild(a2);
    a1->addChild(a11);

    EXPECT_EQ(a1.get(), root->findChildWithName("n", true).get());
    EXPECT_EQ(b.get(), root->findChildWithName("n", false).get());
    EXPECT_TRUE(root->findChildWithName("root", true).isNull());

    EXPECT_EQ((QStringList{"a", "a11", "a2", "n"}), namesOf(root->findAllChildsOfType("X", true)));
    EXPECT_EQ((QStringList{"a", "n"}), namesOf(root->findAllChildsOfType("X", false)));

    EXPECT_TRUE(root->findFirstChildOfType("Y", false).isNull());
    EXPECT_EQ(a1.get(), root->findFirstChildOfType("Y", true).get());
    const SceneElement* constRoot = root.get();
    EXPECT_EQ(a.get(), constRoot->findFirstChildOfType("X", true));

    EXPECT_EQ(a.get(), a11->findFirstParentOfType("X").get());
    EXPECT_EQ(root.get(), static_cast<const SceneElement*>(a11.get())->findFirstParentOfType("Root"));
    EXPECT_TRUE(a->findFirstParentOfType("X").isNull());

    EXPECT_TRUE(root->hasAsChild(a11, true));
    EXPECT_FALSE(root->hasAsChild(a11, false));
    EXPECT_TRUE(a11->isChildOf(a1));
    EXPECT_FALSE(a11->isChildOf(a));
    EXPECT_FALSE(a11->isChildOf(static_cast<SceneElement*>(nullptr)));
    dismantle(root);
}

TEST(SceneElementTree, ModifierStateFollowsThePlaceInTheTree)
{
    Element clip = make("clip");
    clip->m_isModifier = true;
    Element plain = make("plain");
    Element child = make("child");
    Element grandchild = make("grandchild");

    clip->addChild(child);
    child->addChild(grandchild);
    EXPECT_TRUE(child->parentIsModifier());
    EXPECT_TRUE(grandchild->parentIsModifier());

    // Removed, the child keeps the value of its old place until it is placed again.
    clip->removeChild(child);
    EXPECT_TRUE(child->parentIsModifier());
    plain->addChild(child);
    EXPECT_FALSE(child->parentIsModifier());

    // The modifier flag of the element itself counts for its children.
    child->m_isModifier = true;
    child->updateChildAParentSceneElementIsAModifier(grandchild);
    EXPECT_TRUE(grandchild->parentIsModifier());
    child->updateChildAParentSceneElementIsAModifier(nullptr);
    dismantle(plain);
}

TEST(SceneElementTree, DestructionAnnouncesItselfTwiceAndDropsTheWidget)
{
    auto* element = new TestElement("gone", "TestElement", true);
    QWidget* widget = element->getCustomGUI();
    ASSERT_NE(nullptr, widget);
    EXPECT_EQ(widget, element->getCustomGUI());
    EXPECT_EQ("gone [Element setup]", widget->windowTitle());
    element->setName("renamed");
    EXPECT_EQ("renamed [Element setup]", widget->windowTitle());
    QPointer<QWidget> guard(widget);

    EventRecorder events{SCENE_ELEMENT_BEFORE_DELETED, SCENE_ELEMENT_DELETED};
    {
        ZPointer<SceneElement> onlyOwner(element);
    }
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_BEFORE_DELETED", "SCENE_ELEMENT_DELETED"}), events.names());
    for (const auto& record : events.records) {
        EXPECT_EQ(nullptr, record.data);
        EXPECT_EQ(element, record.source);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(guard.isNull());

    Element plain = make("plain");
    EXPECT_EQ(nullptr, plain->getCustomGUI());
}
