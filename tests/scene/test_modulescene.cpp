#include "kernel/events/eventhandler.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/memento.h"
#include "kernel/main/undoredomanager.h"
#include "module_scene/modulescene.h"
#include "module_scene/modulescenefactory.h"
#include "testelement.h"

#include <QFile>
#include <QIcon>
#include <boost/function.hpp>
#include <gtest/gtest.h>
#include <memory>

using qel::main::MenuAndToolbarManager;
using qel::main::Module;
using qel::main::ModuleFactory;
using qel::main::UndoRedoManager;
using qel::scene::ModuleScene;

namespace {

qel::main::Command* createNothing()
{
    return nullptr;
}

class NoOpMemento : public qel::main::Memento
{
public:
    void restore() override {}
    qel::main::Memento* createOpposite() override { return nullptr; }
};

std::unique_ptr<Module> createModule()
{
    return std::unique_ptr<Module>(getFactory()->createModule());
}

void deleteAnElement()
{
    qel::util::ZPointer<qel::scene::SceneElement> element(new qel::test::TestElement("short-lived"));
}

} // namespace

TEST(ModuleScene, FactoryIsOneObjectUntilRecycled)
{
    ModuleFactory* factory = getFactory();
    ASSERT_NE(nullptr, factory);
    EXPECT_EQ(factory, getFactory());
    const size_t registeredAtLoad = factory->getCommandCreators().size();
    factory->registerPrimaryCommand(&createNothing);
    EXPECT_EQ(registeredAtLoad + 1, getFactory()->getCommandCreators().size());

    recycleFactory();
    // A new factory: the creators of the old one went with it (the address may be reused).
    EXPECT_TRUE(getFactory()->getCommandCreators().empty());
    EXPECT_EQ(getFactory(), getFactory());
}

TEST(ModuleScene, FactoryDescribesTheModule)
{
    const qel::main::InformationObject* information = getFactory()->getInformationObject();
    ASSERT_NE(nullptr, information);
    EXPECT_EQ("Handles scene items", information->getDescription());
    EXPECT_EQ("Scene", information->getName());
    EXPECT_TRUE(information->getHomepage().isEmpty());
    EXPECT_TRUE(information->getLicense().isEmpty());
    EXPECT_FALSE(information->getIcon().isNull());
    EXPECT_FALSE(information->getIcon().pixmap(32, 32).isNull());
}

TEST(ModuleScene, ResourcesLiveAsLongAsTheFactory)
{
    getFactory();
    const QString icon = ":/module_scene/image/scenemodule.png";
    EXPECT_TRUE(QFile::exists(icon));
    recycleFactory();
    EXPECT_FALSE(QFile::exists(icon));
    getFactory();
    EXPECT_TRUE(QFile::exists(icon));
}

TEST(ModuleScene, EveryIconTheModuleNamesIsAResource)
{
    getFactory();
    const char* names[] = {"scenemodule", "clippingplane", "lightsource", "addline", "plane", "spherebox",
                           "alignmodels", "alignpresetcenters", "alignxy", "alignxz", "alignyz", "deselectallfaces",
                           "fittoview", "hide", "measure", "delete", "rotate", "selectface", "addselectedpoint",
                           "setuplines", "setuppoints", "bbox", "translate", "viewscene", "selectnone", "selectmodel",
                           "selectpoint", "selectnextpoint", "sphere", "rotatex", "rotatey", "rotatez",
                           "object-locked", "object-unlocked"};
    for (const char* name : names) {
        const QString path = QString(":/module_scene/image/%1.png").arg(name);
        EXPECT_FALSE(QIcon(path).pixmap(32, 32).isNull()) << qPrintable(path);
    }
    EXPECT_TRUE(QFile::exists(":/image/fileopen.png"));
}

TEST(ModuleScene, ModuleRegistersTheSceneEventsForItsLifetime)
{
    auto* events = qel::events::EventHandler::getInstance();
    {
        std::unique_ptr<Module> module = createModule();
        EXPECT_TRUE(events->isEventTypeRegistered("Scene"));
        EXPECT_TRUE(module->isGUIModule());
        EXPECT_EQ("Scene", module->getName());
    }
    EXPECT_FALSE(events->isEventTypeRegistered("Scene"));
}

TEST(ModuleScene, ModuleGivesItsMenuToolbarAndSettingsPlaces)
{
    std::unique_ptr<Module> module = createModule();
    typedef std::map<QString, int> Places;
    std::map<int, Places> places;
    for (const auto& flag : module->getGUIDescriptions())
        for (const auto& entry : flag.second)
            places[flag.first][entry.first] = entry.second.getPosition();

    const std::map<int, Places> expected = {
        {1, {{"Scene", 2000}}},
        {2, {{"Element", 100}, {"Scene", 200}, {"Selection Mode", 400}, {"Drawing", 500}}},
        {8, {{"Scene", 100}, {"Transformation", 90}, {"Project", 80}}},
    };
    EXPECT_EQ(expected, places);
}

TEST(ModuleScene, LoadReportsItsStepAndNeedsAStatusFunction)
{
    std::unique_ptr<Module> module = createModule();
    QStringList reported;
    module->load([&reported](const QString& text) { reported << text; });
    EXPECT_EQ(QStringList{"Loading input plugins"}, reported);
    EXPECT_THROW(module->load(Module::StatusFunction()), boost::bad_function_call);
}

TEST(ModuleScene, DeletingAnElementEmptiesTheUndoHistoryWhileTheModuleLives)
{
    auto* undo = UndoRedoManager::getInstance();
    {
        std::unique_ptr<Module> module = createModule();
        undo->addMemento(new NoOpMemento);
        undo->addMemento(new NoOpMemento);
        ASSERT_EQ(2u, undo->undoCount());
        deleteAnElement();
        EXPECT_EQ(0u, undo->undoCount());
        EXPECT_FALSE(undo->canUndo());
    }
    undo->addMemento(new NoOpMemento);
    deleteAnElement();
    EXPECT_EQ(1u, undo->undoCount());
    undo->clear();
}
