#pragma once

#include "kernel/main/sceneservice.h"

namespace qel {
namespace scene {

class Scene;

// What the stand-alone host asks of the module beyond commands: the state of the global
// scene as JSON and, once the views exist, a rendered picture of it.
class ModuleSceneService : public main::SceneService
{
public:
    static ModuleSceneService* getInstance();

    // Views come later: a null image for now.
    QImage renderScene(const QSize& size) override;
    // Also logs the tree at level 4000.
    QString dumpScene() override;

    // The JSON of a scene: its global numbers, focus, elements in registry order and picked
    // points. Numbers carry the digits they need to read back exactly; non-finite ones are null.
    static QString toJson(Scene* scene);
};

} // namespace scene
} // namespace qel

extern "C" {
__attribute__((visibility("default"))) qel::main::SceneService* getSceneService();
}
