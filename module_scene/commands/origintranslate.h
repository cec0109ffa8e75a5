#pragma once

#include "module_scene/commands/scenecommand.h"

namespace qel {
namespace commands {
namespace scene {

// origintranslate(x,y,z): puts the origin (pivot) of the focused element at the position,
// in shown units of the element's frame. Messages go to the output console.
class OriginTranslate : public SceneCommand
{
public:
    static const char* const CommandName;

    static main::Command* create();

    OriginTranslate();
    OriginTranslate(const OriginTranslate& other) = default;
    ~OriginTranslate() override;

    void execute() override;

protected:
    void focusChanged() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
