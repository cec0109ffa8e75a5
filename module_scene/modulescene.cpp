#include "module_scene/modulescene.h"

#include "kernel/events/eventhandler.h"
#include "kernel/io/projectmanager.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/io/importer.h"
#include "module_scene/project/sceneprojectparticipant.h"
#include "module_scene/scene.h"
#include "module_scene/undoguard.h"

namespace qel {
namespace scene {

ModuleScene::ModuleScene(main::InformationObject* information)
    : main::Module(information), undoGuard(nullptr), sceneHistory(nullptr), projectParticipant(nullptr)
{
    events::EventHandler::getInstance()->registerEventTypes("Scene");
    addGUILocations();
    undoGuard = new UndoGuard;
    // The global scene is asked for only when a project is saved or opened.
    projectParticipant = new SceneProjectParticipant([] { return _GlobalScene(); }, true);
    io::ProjectManager::getInstance()->addParticipant(projectParticipant);
}

ModuleScene::~ModuleScene()
{
    io::ProjectManager::getInstance()->removeParticipant(projectParticipant);
    delete projectParticipant;
    events::EventHandler::getInstance()->unregisterEventTypes("Scene");
    // The scene history, once attached, is deleted here, before the undo guard.
    delete undoGuard;
    delete io::scene::Importer::getInstance();
}

bool ModuleScene::isGUIModule()
{
    return true;
}

void ModuleScene::load(StatusFunction status)
{
    status("Loading input plugins");
    io::scene::Importer::getInstance()->refreshPlugins();
    status.clear();
}

// Keys are the GUI flags of the command descriptors: 1 menu, 2 toolbar, 8 settings page.
void ModuleScene::addGUILocations()
{
    guiLocations[1][tr("Scene")] = main::MenuAndToolbarManager::Position(2000);
    guiLocations[2][tr("Element")] = main::MenuAndToolbarManager::Position(100);
    guiLocations[2][tr("Scene")] = main::MenuAndToolbarManager::Position(200);
    guiLocations[2][tr("Selection Mode")] = main::MenuAndToolbarManager::Position(400);
    guiLocations[2][tr("Drawing")] = main::MenuAndToolbarManager::Position(500);
    guiLocations[8][tr("Scene")] = main::MenuAndToolbarManager::Position(100);
    guiLocations[8][tr("Transformation")] = main::MenuAndToolbarManager::Position(90);
    guiLocations[8][tr("Project")] = main::MenuAndToolbarManager::Position(80);
}

} // namespace scene
} // namespace qel
