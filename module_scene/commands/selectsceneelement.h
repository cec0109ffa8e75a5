#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace commands {
namespace scene {

// selectsceneelements([a,b,...]) selects the named elements; selectsceneelements() selects
// none. The scene changes its selection on the event this fires.
class SelectSceneElement : public main::Command
{
public:
    static const char* const CommandName;

    enum SetId { SET_SELECT = 1, SET_DESELECT_ALL = 2 };

    static main::Command* create();

    SelectSceneElement();
    SelectSceneElement(const SelectSceneElement& other) = default;
    ~SelectSceneElement() override;

    void execute() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
