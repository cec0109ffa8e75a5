#pragma once

#include "module_scene/commands/scenecommand.h"

#include <QString>

namespace qel {
namespace commands {
namespace scene {

// translate(name,x,y,z,absolute) and translate(x,y,z,absolute) on the focused element.
// Coordinates are in shown units; a run is one undo step.
class Translate : public SceneCommand
{
public:
    static const char* const CommandName;

    static main::Command* create();
    static QString buildCommandString(const QString& name, double x, double y, double z, bool absolute);

    Translate();
    Translate(const Translate& other) = default;
    ~Translate() override;

    void execute() override;

protected:
    void focusChanged() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
