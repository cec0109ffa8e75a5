#include "module_scene/modulescenefactory.h"

#include "kernel/main/informationobject.h"
#include "module_scene/deferrediconengine.h"

#include <QUrl>

// Q_INIT_RESOURCE declares the generated function in the namespace it is used in, so the
// resource calls stay outside the module's namespaces.
static void registerModuleResources()
{
    Q_INIT_RESOURCE(module_scene);
}

static void unregisterModuleResources()
{
    Q_CLEANUP_RESOURCE(module_scene);
}

namespace qel {
namespace scene {

ModuleScene::ModuleSceneFactory* ModuleScene::ModuleSceneFactory::instance = nullptr;

ModuleScene::ModuleSceneFactory* ModuleScene::ModuleSceneFactory::getInstance()
{
    if (!instance)
        new ModuleSceneFactory;
    return instance;
}

void ModuleScene::ModuleSceneFactory::recycle()
{
    delete getInstance();
}

ModuleScene::ModuleSceneFactory::ModuleSceneFactory()
{
    registerModuleResources();
    setInformationObject(new main::InformationObject("Handles scene items", "Scene",
                                                     DeferredIconEngine::icon(":/module_scene/image/scenemodule.png"),
                                                     QUrl(), QUrl()));
    instance = this;
}

ModuleScene::ModuleSceneFactory::~ModuleSceneFactory()
{
    instance = nullptr;
    unregisterModuleResources();
}

main::Module* ModuleScene::ModuleSceneFactory::createModule()
{
    return new ModuleScene(getInformationObject());
}

} // namespace scene
} // namespace qel

qel::main::ModuleFactory* getFactory()
{
    return qel::scene::ModuleSceneFactory::getInstance();
}

void recycleFactory()
{
    qel::scene::ModuleSceneFactory::recycle();
}
