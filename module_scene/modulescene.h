#pragma once

#include "kernel/main/module.h"

namespace qel {
namespace main {
class InformationObject;
}
namespace scene {

class SceneHistory;
class SceneProjectParticipant;
class UndoGuard;

// The scene module as the host sees it. It owns the long-lived companions that follow
// the scene from outside: the undo guard, the scene history and the scene's share of
// projects.
class ModuleScene : public main::Module
{
    Q_OBJECT

public:
    // The process-wide factory that getFactory hands out; see modulescenefactory.h.
    class ModuleSceneFactory;

    explicit ModuleScene(main::InformationObject* information);
    ~ModuleScene() override;

    bool isGUIModule() override;
    // Loads the import plug-ins; the status function is used once and then cleared.
    void load(StatusFunction status) override;

private:
    void addGUILocations();

    UndoGuard* undoGuard;
    SceneHistory* sceneHistory;
    SceneProjectParticipant* projectParticipant;
};

} // namespace scene
} // namespace qel
