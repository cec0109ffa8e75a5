#include "kernel/main/command.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/module.h"
#include "kernel/main/modulefactory.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/overseer.h"
#include "support/logcapture.h"

#include <QDir>
#include <QDockWidget>
#include <QMainWindow>
#include <QPointer>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using qel::main::Command;
using qel::main::CommandDescriptor;
using qel::main::CommandGUIDescriptor;
using qel::main::InformationObject;
using qel::main::Module;
using qel::main::ModuleFactory;
using qel::main::ModuleManager;
using qel::main::Overseer;

namespace {

struct ModuleJournal
{
    QStringList steps;
    int runs = 0;
};

ModuleJournal* journal = nullptr;

class FakeCommand : public Command
{
public:
    FakeCommand(const QString& name, CommandGUIDescriptor* gui = nullptr)
        : Command(new CommandDescriptor(name, "a command of the fake module"), gui)
    {
        enableCloning<FakeCommand>();
    }
    FakeCommand(const FakeCommand&) = default;
    ~FakeCommand() override
    {
        if (journal && getName() == "fakemodulemenu")
            journal->steps << "command deleted";
    }
    void execute() override
    {
        if (journal)
            ++journal->runs;
    }
};

Command* createMenuCommand()
{
    return new FakeCommand("fakemodulemenu",
                           new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, "Fake", 10, "Fake entry", "", nullptr));
}

Command* createPlainCommand()
{
    return new FakeCommand("fakemoduleplain");
}

class FakeModule : public Module
{
public:
    explicit FakeModule(InformationObject* information) : Module(information)
    {
        guiLocations[CommandGUIDescriptor::MAINMENU]["Fake"] = 500;
        journal->steps << "constructed";
    }
    ~FakeModule() override { journal->steps << "destroyed"; }

    void registerCommand(Command* command) override
    {
        journal->steps << "register " + command->getName();
        Module::registerCommand(command);
    }
    void load(StatusFunction status) override
    {
        // The module can already find itself while it loads.
        journal->steps << QString("load, found itself: %1").arg(ModuleManager::getInstance()->getModule("Fake") == this);
        status("loading the fake module");
    }
    void doShutdownActions() override { journal->steps << "shutdown"; }
};

class FakeFactory : public ModuleFactory
{
public:
    FakeFactory()
    {
        setInformationObject(new InformationObject("A module for the tests", "Fake", QIcon()));
        registerPrimaryCommand(&createMenuCommand);
        registerPrimaryCommand(&createPlainCommand);
    }
    Module* createModule() override { return new FakeModule(getInformationObject()); }
};

class ModuleTest : public ::testing::Test
{
protected:
    void SetUp() override { journal = &record; }
    void TearDown() override
    {
        ModuleManager::getInstance()->unloadModules();
        journal = nullptr;
    }

    ModuleJournal record;
};

} // namespace

TEST_F(ModuleTest, AddedModuleRegistersItsCommandsAndLoads)
{
    FakeFactory factory;
    EXPECT_FALSE(factory.registerPrimaryCommand(&createPlainCommand)); // once is enough
    QStringList statusTexts;
    ASSERT_TRUE(ModuleManager::getInstance()->addModule(
        &factory, [&statusTexts](const QString& text) { statusTexts << text; }));

    EXPECT_EQ(QStringList({"constructed", "register fakemodulemenu", "register fakemoduleplain",
                           "load, found itself: 1"}),
              record.steps);
    EXPECT_EQ(QStringList({"loading the fake module"}), statusTexts);

    Module* module = ModuleManager::getInstance()->getModule("Fake");
    ASSERT_NE(nullptr, module);
    EXPECT_EQ(nullptr, ModuleManager::getInstance()->getModule("Unknown"));
    EXPECT_EQ(std::vector<QString>({"fakemodulemenu", "fakemoduleplain"}), module->getCommands());
    ASSERT_NE(nullptr, ModuleManager::getInstance()->getCommand("fakemoduleplain"));
    EXPECT_TRUE(Overseer::getInstance()->executeNativeCommand("fakemoduleplain()"));
    EXPECT_EQ(1, record.runs);

    // The menu of the module is built with its entry.
    auto* menus = Overseer::getInstance()->getMenuAndToolbarManager();
    EXPECT_TRUE(menus->getMenuNames().contains("Fake"));
    ASSERT_EQ(1u, menus->getEntries(CommandGUIDescriptor::MAINMENU, "Fake").size());

    // The same factory again is refused.
    qel::test::LogCapture log;
    EXPECT_FALSE(ModuleManager::getInstance()->addModule(&factory));
    EXPECT_EQ(1, log.count("already added", 0));

    record.steps.clear();
    ModuleManager::getInstance()->unloadModules();
    EXPECT_EQ(QStringList({"shutdown", "command deleted", "destroyed"}), record.steps);
    EXPECT_EQ(nullptr, ModuleManager::getInstance()->getModule("Fake"));
    EXPECT_EQ(nullptr, Overseer::getInstance()->getCommandProcessor()->getCommand("fakemoduleplain"));
    EXPECT_FALSE(menus->getMenuNames().contains("Fake"));
}

TEST_F(ModuleTest, ACommandOfTheSameNameIsRefusedAndDropped)
{
    auto* processor = Overseer::getInstance()->getCommandProcessor();
    ASSERT_TRUE(processor->registerCommand(new FakeCommand("fakemoduleplain")));
    FakeFactory factory;
    qel::test::LogCapture log;
    ASSERT_TRUE(ModuleManager::getInstance()->addModule(&factory));
    EXPECT_EQ(1, log.count("command 'fakemoduleplain' was refused", 1000));
    EXPECT_EQ(std::vector<QString>({"fakemodulemenu"}), ModuleManager::getInstance()->getModule("Fake")->getCommands());
    ModuleManager::getInstance()->unloadModules();
    // What the module didn't register stays.
    EXPECT_NE(nullptr, processor->getCommand("fakemoduleplain"));
    processor->unregisterCommand("fakemoduleplain");
}

TEST_F(ModuleTest, FolderWithoutModulesIsLoggedAndSkipped)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    // A real library without getFactory (the kernel, as it lies beside the modules), and a
    // file that only looks like one.
    const QString kernel = QString(QEL_BINARY_DIR) + "/libkernel.so";
    ASSERT_TRUE(QFile::exists(kernel));
    ASSERT_TRUE(QFile::link(kernel, folder.filePath("libnotamodule.so")));
    QFile broken(folder.filePath("libbroken.so"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("this is not a shared object");
    broken.close();

    qel::test::LogCapture log;
    EXPECT_EQ(0, ModuleManager::getInstance()->loadModules(folder.path()));
    EXPECT_EQ(1, log.count("no getFactory"));
    EXPECT_EQ(1, log.count("Couldn't load library", 1000));
    EXPECT_TRUE(log.contains("libbroken.so", 1000));
    EXPECT_TRUE(ModuleManager::getInstance()->getModules().empty());

    log.clear();
    EXPECT_EQ(0, ModuleManager::getInstance()->loadModules(folder.filePath("missing")));
    EXPECT_EQ(1, log.count("doesn't exist", 1000));
}

namespace {

// Keeps a dock in the main window, as the scene's panels do.
class DockModule : public Module
{
public:
    explicit DockModule(InformationObject* information) : Module(information) {}
    void load(StatusFunction) override
    {
        dock = Overseer::getInstance()->registerDockWidget("Farewell", Qt::LeftDockWidgetArea);
    }
    void doShutdownActions() override { journal->steps << QString("shutdown, dock alive: %1").arg(!dock.isNull()); }
    ~DockModule() override { journal->steps << "destroyed"; }

    QPointer<QDockWidget> dock;
};

class DockFactory : public ModuleFactory
{
public:
    DockFactory()
    {
        setInformationObject(new InformationObject("keeps a dock", "Farewell", QIcon()));
        registerPrimaryCommand(&createPlainCommand);
    }
    Module* createModule() override { return new DockModule(getInformationObject()); }
};

} // namespace

TEST_F(ModuleTest, DestroyingTheHostClosesTheWindowsBeforeTheModulesGo)
{
    DockFactory factory;
    ASSERT_TRUE(ModuleManager::getInstance()->addModule(&factory));
    ASSERT_NE(nullptr, Overseer::getInstance()->getMainWindow()->findChild<QDockWidget*>("Farewell"));

    Overseer::destroyInstance();
    EXPECT_EQ(QStringList({"shutdown, dock alive: 0", "destroyed"}), record.steps);
    EXPECT_TRUE(ModuleManager::getInstance()->getModules().empty());

    // A fresh host starts empty.
    EXPECT_EQ(nullptr, Overseer::getInstance()->getCommandProcessor()->getCommand("fakemoduleplain"));
    EXPECT_EQ(nullptr, Overseer::getInstance()->getMainWindow()->findChild<QDockWidget*>("Farewell"));
}
