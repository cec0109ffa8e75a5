#pragma once

#include "module_scene/commands/addelementcommand.h"

namespace qel {
namespace commands {
namespace scene {

// addselectionplane: a selection plane named "SelectionPlane", based at the first model.
class AddSelectionPlane : public AddElementCommand
{
public:
    static const char* const CommandName;
    static main::Command* create();

    AddSelectionPlane();

protected:
    qel::scene::SceneElement* createElement(qel::scene::Scene* scene) override;
    void placeElement(qel::scene::Scene* scene, qel::scene::SceneElement* element) override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
