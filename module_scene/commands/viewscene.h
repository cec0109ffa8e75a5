#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace commands {
namespace scene {

// viewscene: opens a new window on the global scene.
class ViewScene : public main::Command
{
public:
    static const char* const CommandName;

    static main::Command* create();

    ViewScene();
    ViewScene(const ViewScene& other) = default;
    ~ViewScene() override;

    void execute() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
