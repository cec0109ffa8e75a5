#pragma once

#include "kernel/main/modulefactory.h"
#include "module_scene/modulescene.h"

namespace qel {
namespace scene {

// The process-wide factory of the module, held in a static pointer. It may be made by a
// static initialiser (command registration needs it) or by the host through getFactory.
class ModuleScene::ModuleSceneFactory : public main::ModuleFactory
{
public:
    // Makes the factory if there is none.
    static ModuleSceneFactory* getInstance();
    // Deletes the factory; the next getInstance makes a new one.
    static void recycle();

    ~ModuleSceneFactory() override;
    main::Module* createModule() override;

private:
    ModuleSceneFactory();

    static ModuleSceneFactory* instance;
};

typedef ModuleScene::ModuleSceneFactory ModuleSceneFactory;

} // namespace scene
} // namespace qel

// The library's door, under plain names for QLibrary::resolve.
extern "C" {
__attribute__((visibility("default"))) qel::main::ModuleFactory* getFactory();
__attribute__((visibility("default"))) void recycleFactory();
}
