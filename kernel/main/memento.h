#pragma once

namespace qel {
namespace main {

// One step of undo history. createOpposite() captures the state as it is now, so that
// the manager can offer a redo of what restore() is about to undo.
class Memento
{
public:
    Memento() = default;
    virtual ~Memento() = default;

    virtual void restore() = 0;
    // A new memento (owned by the caller), or null when there is nothing to capture.
    virtual Memento* createOpposite() = 0;

    Memento(const Memento&) = delete;
    Memento& operator=(const Memento&) = delete;
};

} // namespace main
} // namespace qel
