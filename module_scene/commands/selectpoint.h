#pragma once

#include "module_scene/commands/scenecommand.h"

#include <QString>

namespace qel {
namespace commands {
namespace scene {

// Adds a selected point on a model: selectpoint(model,x,y,z) in scene coordinates,
// selectpoint(x,y,z) in shown units on the first selected element, and
// selectpoint(model,[x,y,z],face) with the face the point was picked on.
class SelectPoint : public SceneCommand
{
public:
    static const char* const CommandName;

    static main::Command* create();

    SelectPoint();
    SelectPoint(const SelectPoint& other) = default;
    ~SelectPoint() override;

    void execute() override;

protected:
    // The main menu's entry is offered for a focused model.
    void focusChanged() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
