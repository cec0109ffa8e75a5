#pragma once

#include "kernel/main/command.h"

namespace qel {
namespace main {
class Event;
}
namespace scene {
class SceneElement;
}
namespace commands {
namespace scene {

// Base of the commands that act on the focused element. Every instance follows the focus
// through SCENE_ELEMENT_FOCUSED; the element it points to is kept alive by the scene.
class SceneCommand : public main::Command
{
public:
    SceneCommand(main::CommandDescriptor* descriptor, main::CommandGUIDescriptor* guiDescriptor);
    SceneCommand(const SceneCommand& other);
    ~SceneCommand() override;

    main::Command* clone() const override;

    qel::scene::SceneElement* getFocusedElement() const { return mp_Element; }

protected:
    virtual void setCheckable(bool checkable);
    virtual void setChecked(bool checked);
    // Called when the focus moved to another element (or to none).
    virtual void focusChanged() = 0;

    // For commands whose last GUI entry acts on the focused element: every entry is greyed
    // while the scene's transform lock is held (command strings still run), and the last
    // one follows the focus through enableFocusedEntry().
    void followTransformLock();
    void enableFocusedEntry();

    qel::scene::SceneElement* mp_Element;

private:
    void registerFocusFunction();
    void sceneElementFocused(const main::Event* event);
    void transformLocked(const main::Event* event);
    void transformUnlocked(const main::Event* event);

    bool m_TransformLocked = false;
};

} // namespace scene
} // namespace commands
} // namespace qel
