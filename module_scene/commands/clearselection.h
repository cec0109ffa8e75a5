#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace commands {
namespace scene {

// clearselection: empties the face selection of every model; points and the element
// selection stay.
class ClearSelection : public main::Command
{
public:
    static const char* const CommandName;

    static main::Command* create();

    ClearSelection();
    ClearSelection(const ClearSelection& other) = default;
    ~ClearSelection() override;

    void execute() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
