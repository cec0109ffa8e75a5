#pragma once

#include "kernel/main/settingscommand.h"

#include <QString>
#include <map>
#include <memory>

namespace qel {
namespace main {
class ComboBoxParameterPanelFactory;
}
namespace commands {
namespace scene {

// measuresystem(system): shows lengths in millimetres (1) or inches (0).
class SetMeasureSystem : public main::SettingsCommand
{
public:
    static main::Command* create();

    SetMeasureSystem();
    SetMeasureSystem(const SetMeasureSystem& other) = default;
    ~SetMeasureSystem() override;

    void execute() override;

private:
    QString systemText(bool metric) const;

    std::map<QString, int> m_Systems;
    // Shared with the working copies, whose parameter still points to it.
    std::shared_ptr<main::ComboBoxParameterPanelFactory> m_PanelFactory;

    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
