#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace commands {
namespace scene {

// removeselectedpoint(index): takes the selected point at that place out of the scene's list.
class RemoveSelectedPoint : public main::Command
{
public:
    static const char* const CommandName;

    static main::Command* create();

    RemoveSelectedPoint();
    RemoveSelectedPoint(const RemoveSelectedPoint& other) = default;
    ~RemoveSelectedPoint() override;

    void execute() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
