#pragma once

namespace qel {
namespace main {
class Event;
}
namespace scene {

// Empties the undo history at each deletion of an element, so that no memento can keep a
// pointer to a dead element. Owned by ModuleScene.
class UndoGuard
{
public:
    UndoGuard();
    ~UndoGuard();
    UndoGuard(const UndoGuard&) = delete;
    UndoGuard& operator=(const UndoGuard&) = delete;

private:
    void elementDeleted(const main::Event* event);
};

} // namespace scene
} // namespace qel
