// The command base of the module, the registration of the commands and the element
// mementos behind their undo steps.
#include "commandfixture.h"
#include "kernel/main/commanddescriptor.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/commands/origintranslate.h"
#include "module_scene/commands/scenecommand.h"
#include "module_scene/sceneelementmemento.h"
#include "module_scene/sceneevents.h"
#include "support/logcapture.h"

#include <QAction>
#include <memory>

using qel::main::CommandDescriptor;
using qel::main::CommandGUIDescriptor;
using namespace qel::test;

namespace {

class CountingCommand : public qel::commands::scene::SceneCommand
{
public:
    explicit CountingCommand(CommandGUIDescriptor* gui = nullptr)
        : SceneCommand(new CommandDescriptor("counting", "counts focus changes"), gui)
    {
        enableCloning<CountingCommand>();
    }
    void execute() override {}
    using SceneCommand::setCheckable;
    using SceneCommand::setChecked;
    int focusChanges = 0;

protected:
    void focusChanged() override { ++focusChanges; }
};

void fireFocus(qel::scene::SceneElement* element)
{
    qel::main::Event event(qel::scene::SCENE_ELEMENT_FOCUSED, element, CommandTest::scene().get(), false);
    qel::main::EventManager::getInstance()->fireEvent(event);
}

CommandGUIDescriptor* menuEntry(const char* text)
{
    return new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, "Scene", 1, text, text, nullptr);
}

struct Entry
{
    CommandGUIDescriptor::GUIFLAG flag;
    const char* location;
    int position;
    const char* text;
    const char* icon;
    const char* shortcut;
    int onlySet;
};

struct Registration
{
    const char* name;
    const char* description;
    std::vector<size_t> setSizes;
    std::vector<Entry> entries;
};

} // namespace

TEST_F(CommandTest, SceneCommandsFollowTheFocusOnlyWhenItMoves)
{
    CountingCommand command;
    auto first = addElement("First");
    auto second = addElement("Second");
    fireFocus(first.get());
    EXPECT_EQ(first.get(), command.getFocusedElement());
    fireFocus(first.get());
    EXPECT_EQ(1, command.focusChanges);
    fireFocus(second.get());
    fireFocus(nullptr);
    EXPECT_EQ(3, command.focusChanges);
    EXPECT_EQ(nullptr, command.getFocusedElement());

    // A working copy starts with the prototype's element.
    fireFocus(second.get());
    std::unique_ptr<qel::main::Command> copy(command.clone());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(second.get(), static_cast<CountingCommand*>(copy.get())->getFocusedElement());
}

TEST_F(CommandTest, SetCheckedSkipsActionsThatAreNotCheckable)
{
    CountingCommand command(menuEntry("first"));
    command.addGUIDescriptor(menuEntry("second"));
    command.getGUIDescriptors().back()->getQAction()->setCheckable(true);
    LogCapture log;
    command.setChecked(true);
    EXPECT_EQ(1, log.count("QAction is not checkable!", 2000));
    EXPECT_FALSE(command.getGUIDescriptors().front()->getQAction()->isChecked());
    EXPECT_TRUE(command.getGUIDescriptors().back()->getQAction()->isChecked());

    command.setCheckable(true);
    command.setChecked(true);
    EXPECT_TRUE(command.getGUIDescriptors().front()->getQAction()->isChecked());
    EXPECT_EQ(1, log.count("QAction is not checkable!"));
}

TEST_F(CommandTest, CommandsAreRegisteredAsTheModuleDescribesThem)
{
    const std::vector<Registration> table = {
        {"translate",
         "Translates a scene element to the given coordinates",
         {5, 4},
         {{CommandGUIDescriptor::CONTEXTMENU, "scenetree", 60, "Translate element", "translate.png", "", 1}}},
        {"rotate",
         "Rotates a scene element around the given vector by degree or radian",
         {7, 6},
         {{CommandGUIDescriptor::CONTEXTMENU, "scenetree", 70, "Rotate element", "rotate.png", "", 1}}},
        {"transform", "Sets the transformmatrix of a scene element", {2}, {}},
        {"origintranslate", "Translates the local origin of an element", {3}, {}},
        {"measure",
         "Sets the measure of the scene",
         {1, 3},
         {{CommandGUIDescriptor::MAINMENU, "Scene", 100, "Measure", "measure.png", "M", -1},
          {CommandGUIDescriptor::TOOLBAR, "Scene", 40, "Measure", "measure.png", "", 1}}},
        {"measuresystem",
         "Sets the measure system",
         {1},
         {{CommandGUIDescriptor::SETTINGS, "Project", 10, "The shown measure system", nullptr, "", -1}}},
    };
    for (const Registration& expected : table) {
        SCOPED_TRACE(expected.name);
        qel::main::Command* command = prototype(expected.name);
        ASSERT_NE(nullptr, command);
        EXPECT_EQ(expected.name, command->getName());
        EXPECT_EQ(expected.description, command->getDescriptor()->getDescription());
        std::vector<size_t> sizes;
        for (qel::main::ParameterSet* set : *command->getParameterSets())
            sizes.push_back(set->size());
        EXPECT_EQ(expected.setSizes, sizes);
        const std::vector<CommandGUIDescriptor*> entries = command->getGUIDescriptors();
        ASSERT_EQ(expected.entries.size(), entries.size());
        for (size_t i = 0; i < entries.size(); ++i) {
            const Entry& entry = expected.entries[i];
            EXPECT_EQ(entry.flag, entries[i]->getFlag());
            EXPECT_EQ(entry.location, entries[i]->getLocation());
            EXPECT_EQ(entry.position, entries[i]->getPosition());
            EXPECT_EQ(entry.text, entries[i]->getNameOnGUI());
            EXPECT_EQ(QKeySequence(entry.shortcut), entries[i]->getShortcut());
            if (entry.icon) {
                ASSERT_NE(nullptr, entries[i]->getIcon());
                EXPECT_FALSE(entries[i]->getIcon()->pixmap(16, 16).isNull()) << entry.icon;
            } else {
                EXPECT_EQ(nullptr, entries[i]->getIcon());
            }
            const std::vector<qel::main::ParameterSet> used = entries[i]->getUsedSets();
            if (entry.onlySet < 0) {
                EXPECT_TRUE(used.empty());
            } else {
                ASSERT_EQ(1u, used.size());
                EXPECT_EQ(entry.onlySet, used.front().getID());
            }
        }
    }
    // The parameter names are part of the dialogs.
    const auto* unitLine = prototype("measure")->getParameterSetByID(1)->getParameterList();
    EXPECT_EQ("unit length", unitLine->at(0)->getParameterName());
    EXPECT_EQ("point 1", unitLine->at(1)->getParameterName());
    EXPECT_EQ("point 2", unitLine->at(2)->getParameterName());
}

TEST_F(CommandTest, TransformLocksGreyTheTreeEntriesButCommandStringsStillRun)
{
    auto model = addElement("Model");
    CommandGUIDescriptor* entry = prototype("translate")->getGUIDescriptors().back();
    scene()->setFocus(model.get());
    EXPECT_TRUE(entry->isQActionEnabled());
    scene()->transformLock();
    EXPECT_FALSE(entry->isQActionEnabled());
    EXPECT_TRUE(run("translate(Model,1,0,0,1)"));
    EXPECT_TRUE(run("rotate(Model,0,0,1,90,1,1)"));
    EXPECT_EQ(1.0, model->getTransformMatrix()[12]);
    EXPECT_FALSE(entry->isQActionEnabled());
    scene()->transformUnlock();
    EXPECT_TRUE(entry->isQActionEnabled());

    // A root node can't be moved, so its entries are greyed when it has the focus.
    scene()->setFocus(scene()->getRootNode().get());
    EXPECT_FALSE(entry->isQActionEnabled());
    EXPECT_FALSE(prototype("rotate")->getGUIDescriptors().back()->isQActionEnabled());
}

TEST_F(CommandTest, OriginTranslateMovesTheOriginOfTheFocusedElement)
{
    auto model = addElement("Model");
    const QString consoleBefore = qel::main::Overseer::getInstance()->getOutputConsole()->getText();
    ASSERT_TRUE(run("origintranslate(1,2,3)"));
    EXPECT_EQ(consoleBefore.toStdString(),
              qel::main::Overseer::getInstance()->getOutputConsole()->getText().toStdString());
    EXPECT_EQ(0u, undoSteps());

    scene()->setFocus(model.get());
    ASSERT_TRUE(run("origintranslate(1,2,3)"));
    EXPECT_TRUE(qel::main::Overseer::getInstance()->getOutputConsole()->getText().endsWith(
        "Origin of the element Model cannot changed!"));
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getOrigin());

    model->m_isOriginChangeable = true;
    ASSERT_TRUE(run("measure(2)"));
    ASSERT_TRUE(run("origintranslate(1,2,3)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(0.5, 1, 1.5), model->getOrigin());
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getTransformMatrix());
    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getOrigin());
    ASSERT_TRUE(run("redo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(0.5, 1, 1.5), model->getOrigin());
}

TEST_F(CommandTest, MementosRestoreWholeSubtreesButNotFixedElements)
{
    auto parent = addElement("Parent");
    qel::util::ZPointer<TestElement> child(new TestElement("Child"));
    qel::util::ZPointer<TestElement> grandchild(new TestElement("Grandchild"));
    parent->addChild(child);
    child->addChild(grandchild);
    grandchild->m_isTransformable = false;
    grandchild->setTransformMatrix(Matrix4::translation(0, 0, 9));
    child->m_isOriginChangeable = true;
    child->setOrigin(Matrix4::translation(0, 1, 0));

    std::unique_ptr<qel::main::Memento> memento(parent->getMemento());
    auto* top = dynamic_cast<qel::scene::SceneElementMemento*>(memento.get());
    ASSERT_NE(nullptr, top);
    // The subtree's mementos hang as one flat list under the top one.
    ASSERT_EQ(2u, top->getChilds().size());
    EXPECT_EQ(child.get(), static_cast<qel::scene::SceneElementMemento*>(top->getChilds().front())->getElement());
    EXPECT_EQ(grandchild.get(), static_cast<qel::scene::SceneElementMemento*>(top->getChilds().back())->getElement());

    parent->setTransformMatrix(Matrix4::translation(1, 0, 0));
    child->setTransformMatrix(Matrix4::translation(2, 0, 0));
    child->setOrigin(Matrix4::identity());
    grandchild->setTransformMatrix(Matrix4::translation(3, 0, 0));

    std::unique_ptr<qel::main::Memento> opposite(memento->createOpposite());
    LogCapture log;
    memento->restore();
    EXPECT_MATRIX_EQ(Matrix4::identity(), parent->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::identity(), child->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::translation(0, 1, 0), child->getOrigin());
    EXPECT_MATRIX_EQ(Matrix4::translation(3, 0, 0), grandchild->getTransformMatrix());
    EXPECT_FALSE(log.contains("not transformable"));

    opposite->restore();
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 0, 0), parent->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::translation(2, 0, 0), child->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::identity(), child->getOrigin());
}

TEST_F(CommandTest, AMoveOfAParentUndoesItsChildrenToo)
{
    auto parent = addElement("Parent");
    qel::util::ZPointer<TestElement> child(new TestElement("Child"));
    parent->addChild(child);
    child->setTransformMatrix(Matrix4::translation(0, 5, 0));
    ASSERT_TRUE(run("translate(Parent,1,0,0,1)"));
    child->setTransformMatrix(Matrix4::translation(0, 6, 0));
    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::identity(), parent->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::translation(0, 5, 0), child->getTransformMatrix());

    // Deleting any element empties the history: no memento outlives its element.
    ASSERT_TRUE(run("translate(Parent,1,0,0,1)"));
    ASSERT_EQ(1u, undoSteps());
    parent->removeChild(child);
    child = nullptr;
    EXPECT_EQ(0u, undoSteps());
}
