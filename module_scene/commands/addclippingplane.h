#pragma once

#include "module_scene/commands/addelementcommand.h"

namespace qel {
namespace commands {
namespace scene {

// addclippingplane: a new clipping plane under the root, while a plane number is free.
class AddClippingPlane : public AddElementCommand
{
public:
    static const char* const CommandName;
    static main::Command* create();

    AddClippingPlane();

protected:
    qel::scene::SceneElement* createElement(qel::scene::Scene* scene) override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
