#pragma once

#include "module_scene/commands/scenecommand.h"

#include <QString>

namespace qel {
namespace commands {
namespace scene {

// rotate(name,x,y,z,angle,degree,absolute) and the same without the name on the focused
// element. Absolute replaces the orientation; relative turns about the element's position
// along the parent's axes. A run is one undo step.
class Rotate : public SceneCommand
{
public:
    static const char* const CommandName;

    static main::Command* create();
    // The angle is in degrees.
    static QString buildCommandString(const QString& name, double x, double y, double z, double angle,
                                      bool absolute);
    static QString buildCommandString(const QString& name, bool x, bool y, bool z, double angle, bool absolute);

    Rotate();
    Rotate(const Rotate& other) = default;
    ~Rotate() override;

    void execute() override;

protected:
    void focusChanged() override;

private:
    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
