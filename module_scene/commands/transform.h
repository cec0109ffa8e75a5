#pragma once

#include "kernel/main/command.h"
#include "kernel/main/parameter.h"
#include "kernel/main/vectorcastclass.h"
#include "kernel/util/zpointer.h"

#include <QString>
#include <vector>

namespace qel {
namespace scene {
class SceneElement;
}
namespace commands {
namespace scene {

// transform(name,[m0,...,m15]): replaces the transform of a named element, the sixteen
// values in memory order. No undo step: it is also the record of an interactive move.
class Transform : public main::Command
{
public:
    static const char* const CommandName;

    static main::Command* create();
    static QString getCommandString(const qel::scene::SceneElement* element);
    // A filled command for an element that was already moved: running it only records the
    // move. The caller owns it.
    static main::Command* getTransformCommand(const qel::scene::SceneElement* element);

    Transform();
    Transform(const Transform& other);
    ~Transform() override;

    void execute() override;

private:
    static QString matrixValues(const qel::scene::SceneElement* element);

    util::ZPointer<main::VectorCastClass<double>> m_CastClass;
    main::Parameter<std::vector<double>>* m_Matrix;
    bool m_Execute;

    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
