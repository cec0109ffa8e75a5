#pragma once

#include "kernel/main/command.h"

#include <QKeySequence>
#include <QString>

namespace qel {
namespace scene {
class Scene;
class SceneElement;
}
namespace commands {
namespace scene {

// Base of the commands without parameters that put one new element into the global
// scene, offered as one entry of the main menu's "Scene" menu. No undo step is made.
class AddElementCommand : public main::Command
{
public:
    struct MenuEntry
    {
        int position;
        QString text;
        QString icon; // file name under the module's image resources
        QKeySequence shortcut;
    };

    AddElementCommand(const char* name, const QString& description, const MenuEntry& entry);

    void execute() override;

protected:
    // The new element, or null when there is no room for one (nothing happens then).
    virtual qel::scene::SceneElement* createElement(qel::scene::Scene* scene) = 0;
    // Runs once the element is in the scene.
    virtual void placeElement(qel::scene::Scene* scene, qel::scene::SceneElement* element);
};

} // namespace scene
} // namespace commands
} // namespace qel
