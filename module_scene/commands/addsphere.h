#pragma once

#include "module_scene/commands/addelementcommand.h"

namespace qel {
namespace commands {
namespace scene {

// addsphere: a selection sphere around the first model (radius 50 without one).
class AddSphere : public AddElementCommand
{
public:
    static const char* const CommandName;
    static main::Command* create();

    AddSphere();

protected:
    qel::scene::SceneElement* createElement(qel::scene::Scene* scene) override;
    void placeElement(qel::scene::Scene* scene, qel::scene::SceneElement* element) override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
