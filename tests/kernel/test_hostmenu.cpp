#include "kernel/gui/parameterdialog.h"
#include "kernel/main/command.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/contextmenuupdater.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/module.h"
#include "kernel/main/modulefactory.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/parameter.h"
#include "support/logcapture.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <QToolBar>
#include <gtest/gtest.h>
#include <memory>

using qel::main::Command;
using qel::main::CommandDescriptor;
using qel::main::CommandGUIDescriptor;
using qel::main::CommandProcessor;
using qel::main::MenuAndToolbarManager;
using qel::main::ModuleManager;
using qel::main::Parameter;
using qel::main::ParameterSet;

namespace {

QStringList executed;

class MenuCommand : public Command
{
public:
    explicit MenuCommand(const QString& name) : Command(new CommandDescriptor(name, "a menu test command"))
    {
        enableCloning<MenuCommand>();
    }
    MenuCommand(const MenuCommand&) = default;
    void execute() override { executed << (selectedParameterSet ? toCommandString() : getName()); }

    MenuCommand* entry(CommandGUIDescriptor::GUIFLAG flag, const QString& location, int position)
    {
        addGUIDescriptor(new CommandGUIDescriptor(flag, location, position, getName(), "", nullptr));
        return this;
    }
};

// Places of a module that brings no commands of its own here.
class LayoutModule : public qel::main::Module
{
public:
    explicit LayoutModule(qel::main::InformationObject* information) : Module(information)
    {
        guiLocations[CommandGUIDescriptor::MAINMENU]["Scene"] = 2000;
        guiLocations[CommandGUIDescriptor::MAINMENU]["Tools"] = 100;
        guiLocations[CommandGUIDescriptor::TOOLBAR]["Element"] = 100;
        guiLocations[CommandGUIDescriptor::TOOLBAR]["Scene"] = 200;
        guiLocations[CommandGUIDescriptor::SETTINGS]["Scene"] = 100;
        guiLocations[CommandGUIDescriptor::SETTINGS]["Transformation"] = 90;
        guiLocations[CommandGUIDescriptor::SETTINGS]["Project"] = 80;
    }
};

class LayoutFactory : public qel::main::ModuleFactory
{
public:
    LayoutFactory() { setInformationObject(new qel::main::InformationObject("places", "MenuLayout", QIcon())); }
    qel::main::Module* createModule() override { return new LayoutModule(getInformationObject()); }
};

QStringList texts(const QList<QAction*>& actions)
{
    QStringList result;
    for (QAction* action : actions)
        result << action->text();
    return result;
}

QStringList names(const std::vector<CommandGUIDescriptor*>& entries)
{
    QStringList result;
    for (CommandGUIDescriptor* entry : entries)
        result << entry->getNameOnGUI();
    return result;
}

class MenuTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        executed.clear();
        ASSERT_TRUE(ModuleManager::getInstance()->addModule(&layout));
        manager.reset(new MenuAndToolbarManager(&window, &processor, ModuleManager::getInstance()));
        manager->setHostPosition(CommandGUIDescriptor::MAINMENU, "File", 0);
    }
    void TearDown() override
    {
        manager->clear();
        manager.reset();
        ModuleManager::getInstance()->unloadModules();
    }

    void add(MenuCommand* command) { ASSERT_TRUE(processor.registerCommand(command)); }

    CommandGUIDescriptor* entryOf(const QString& name)
    {
        return processor.getCommand(name)->getGUIDescriptors().front();
    }

    LayoutFactory layout;
    QMainWindow window;
    CommandProcessor processor;
    std::unique_ptr<MenuAndToolbarManager> manager;
};

} // namespace

TEST_F(MenuTest, PlacesFollowTheModulesAndEntriesTheirPositions)
{
    add((new MenuCommand("viewscene"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 20));
    add((new MenuCommand("addsphere"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 17));
    add((new MenuCommand("measure"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 100));
    add((new MenuCommand("addclippingplane"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 10));
    add((new MenuCommand("addlightsource"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 10));
    add((new MenuCommand("loadmodel"))->entry(CommandGUIDescriptor::MAINMENU, "File", 0));
    add((new MenuCommand("zetatool"))->entry(CommandGUIDescriptor::MAINMENU, "Zeta", 0));
    add((new MenuCommand("alphatool"))->entry(CommandGUIDescriptor::MAINMENU, "Alpha", 0));
    add((new MenuCommand("toolstool"))->entry(CommandGUIDescriptor::MAINMENU, "Tools", 0));
    add((new MenuCommand("alignxz"))->entry(CommandGUIDescriptor::TOOLBAR, "Scene", 20));
    add((new MenuCommand("alignxy"))->entry(CommandGUIDescriptor::TOOLBAR, "Scene", 10));
    add((new MenuCommand("showbbox"))->entry(CommandGUIDescriptor::TOOLBAR, "Element", 10));
    add((new MenuCommand("setstereomode"))->entry(CommandGUIDescriptor::SETTINGS, "Scene", 20));
    add((new MenuCommand("measuresystem"))->entry(CommandGUIDescriptor::SETTINGS, "Project", 10));
    add((new MenuCommand("settransformspeed"))->entry(CommandGUIDescriptor::SETTINGS, "Transformation", 0));
    manager->update();

    // Host place first, module places by their positions, unknown ones last by name.
    EXPECT_EQ(QStringList({"File", "Tools", "Scene", "Alpha", "Zeta"}), manager->getMenuNames());
    EXPECT_EQ(manager->getMenuNames(), texts(window.menuBar()->actions()));
    // Equal positions keep the order of the command names.
    EXPECT_EQ(QStringList({"addclippingplane", "addlightsource", "addsphere", "viewscene", "measure"}),
              texts(manager->getMenu("Scene")->actions()));

    EXPECT_EQ(QStringList({"Element", "Scene"}), manager->getToolBarNames());
    EXPECT_EQ(QStringList({"alignxy", "alignxz"}), texts(manager->getToolBar("Scene")->actions()));
    EXPECT_EQ(&window, manager->getToolBar("Element")->parentWidget());

    EXPECT_EQ(QStringList({"Project", "Transformation", "Scene"}), manager->getSettingsPages());
    EXPECT_EQ(QStringList({"setstereomode"}), names(manager->getEntries(CommandGUIDescriptor::SETTINGS, "Scene")));

    // A rebuild after a command is gone drops its entries and its emptied menu.
    processor.unregisterCommand("zetatool");
    processor.unregisterCommand("measure");
    manager->update();
    EXPECT_EQ(QStringList({"File", "Tools", "Scene", "Alpha"}), texts(window.menuBar()->actions()));
    EXPECT_EQ(nullptr, manager->getMenu("Zeta"));
    EXPECT_EQ(QStringList({"addclippingplane", "addlightsource", "addsphere", "viewscene"}),
              texts(manager->getMenu("Scene")->actions()));
}

TEST_F(MenuTest, ContextMenusAreSharedWithTheirUpdaters)
{
    add((new MenuCommand("removesceneelement"))->entry(CommandGUIDescriptor::CONTEXTMENU, "scenetree", 30));
    add((new MenuCommand("hidesceneelement"))->entry(CommandGUIDescriptor::CONTEXTMENU, "scenetree", 0));
    manager->update();
    EXPECT_EQ(QStringList({"hidesceneelement", "removesceneelement"}),
              texts(manager->getContextMenu("scenetree")->actions()));
    EXPECT_TRUE(manager->getContextMenu("unknown")->actions().isEmpty());

    QMenu treeMenu;
    {
        qel::main::ContextMenuUpdater updater(&treeMenu, "scenetree", manager.get());
        EXPECT_EQ(QStringList({"hidesceneelement", "removesceneelement"}), texts(treeMenu.actions()));

        add((new MenuCommand("showbbox"))->entry(CommandGUIDescriptor::CONTEXTMENU, "scenetree", 10));
        manager->update();
        EXPECT_EQ(QStringList({"hidesceneelement", "showbbox", "removesceneelement"}), texts(treeMenu.actions()));
    }
    // Without its updater the menu is left alone.
    processor.unregisterCommand("showbbox");
    manager->update();
    EXPECT_EQ(2, manager->getContextMenu("scenetree")->actions().size());
}

TEST_F(MenuTest, ActionsRunOpenOrAskForParameters)
{
    add((new MenuCommand("viewscene"))->entry(CommandGUIDescriptor::MAINMENU, "Scene", 0));

    auto* opened = new MenuCommand("loadmodel");
    opened->entry(CommandGUIDescriptor::MAINMENU, "File", 0);
    QStringList openCalls;
    opened->getGUIDescriptors().front()->setGUIOpenFunction(
        [&openCalls](QAction* action, CommandGUIDescriptor* descriptor) {
            openCalls << action->text() + "/" + descriptor->getNameOnGUI();
        });
    add(opened);

    auto* translate = new MenuCommand("translate");
    auto* byName = new ParameterSet(0, "by name");
    byName->addParameter(new Parameter<QString>("name", "element"));
    byName->addParameter(new Parameter<double>("x", "x", "0"));
    auto* focused = new ParameterSet(1, "focused");
    focused->addParameter(new Parameter<double>("x", "x", "2.5"));
    translate->addParameterSet(byName);
    translate->addParameterSet(focused);
    translate->entry(CommandGUIDescriptor::CONTEXTMENU, "scenetree", 60);
    translate->getGUIDescriptors().front()->useOnly({ParameterSet(1, "focused")});
    add(translate);

    auto* disabled = new MenuCommand("fittoview");
    disabled->entry(CommandGUIDescriptor::MAINMENU, "Scene", 40);
    disabled->disableCommand(true);
    add(disabled);
    manager->update();

    entryOf("viewscene")->getQAction()->trigger();
    EXPECT_EQ(QStringList({"viewscene"}), executed);

    entryOf("loadmodel")->getQAction()->trigger();
    EXPECT_EQ(QStringList({"loadmodel/loadmodel"}), openCalls);
    EXPECT_EQ(1, executed.size());

    qel::test::LogCapture log;
    entryOf("fittoview")->getQAction()->trigger();
    EXPECT_EQ(1, executed.size());
    EXPECT_EQ(1, log.count("'fittoview' is disabled", 2000));

    // A disabled entry doesn't open its own dialog either.
    opened->disableCommand(true);
    entryOf("loadmodel")->getQAction()->trigger();
    EXPECT_EQ(QStringList({"loadmodel/loadmodel"}), openCalls);
    EXPECT_EQ(1, log.count("'loadmodel' is disabled", 2000));
    opened->disableCommand(false);

    // The entry is restricted to the focused form: the dialog offers that set alone.
    int offeredSets = 0;
    QTimer::singleShot(0, [&offeredSets]() {
        auto* dialog = qobject_cast<qel::gui::ParameterDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(nullptr, dialog);
        offeredSets = dialog->getSetCount();
        dialog->setArgument(0, "-4");
        dialog->accept();
    });
    entryOf("translate")->getQAction()->trigger();
    EXPECT_EQ(1, offeredSets);
    EXPECT_EQ(QStringList({"viewscene", "translate(-4)"}), executed);
}

TEST_F(MenuTest, HostEntriesStandAmongTheCommandsAndSurviveRebuilds)
{
    add((new MenuCommand("loadmodel"))->entry(CommandGUIDescriptor::MAINMENU, "File", 0));
    int quits = 0;
    CommandGUIDescriptor quit(CommandGUIDescriptor::MAINMENU, "File", 1000, "Quit", "", nullptr);
    quit.setGUIOpenFunction([&quits](QAction*, CommandGUIDescriptor*) { ++quits; });
    CommandGUIDescriptor open(CommandGUIDescriptor::MAINMENU, "File", -10, "Open...", "", nullptr);
    manager->addHostEntry(&quit);
    manager->addHostEntry(&open);
    manager->addHostEntry(&quit);
    manager->update();
    ASSERT_NE(nullptr, manager->getMenu("File"));
    EXPECT_EQ(QStringList({"Open...", "loadmodel", "Quit"}), texts(manager->getMenu("File")->actions()));

    quit.getQAction()->trigger();
    EXPECT_EQ(1, quits);
    EXPECT_TRUE(executed.isEmpty());

    manager->removeHostEntry(&open);
    manager->removeHostEntry(&quit);
    EXPECT_EQ(QStringList({"loadmodel"}), texts(manager->getMenu("File")->actions()));
}
