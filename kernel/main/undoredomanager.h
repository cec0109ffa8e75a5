#pragma once

#include "kernel/main/memento.h"

#include <QMutex>
#include <QRecursiveMutex>
#include <vector>

namespace qel {
namespace main {

// The undo history. Owns its mementos. Each undo captures the opposite step first, so it
// can be redone; a new step drops the redo history. Fires "UNDO_AVAILABLE",
// "UNDO_NOT_AVAILABLE", "REDO_AVAILABLE" and "REDO_NOT_AVAILABLE" ("Global") when the
// availability changes. Safe from any thread; restore() runs without the lock held.
class UndoRedoManager
{
public:
    static UndoRedoManager* getInstance();

    // Takes over the memento as the next step to undo.
    void addMemento(Memento* memento);
    // False when there is nothing to undo (or redo) or the step failed.
    bool undo();
    bool redo();
    bool canUndo() const;
    bool canRedo() const;
    size_t undoCount() const;
    size_t redoCount() const;
    void clear();

    ~UndoRedoManager();
    UndoRedoManager(const UndoRedoManager&) = delete;
    UndoRedoManager& operator=(const UndoRedoManager&) = delete;

private:
    UndoRedoManager() = default;

    bool step(std::vector<Memento*>& from, std::vector<Memento*>& to, const char* function);
    void announceAvailability();

    mutable QMutex mutex;
    std::vector<Memento*> undoStack;
    std::vector<Memento*> redoStack;
    QRecursiveMutex announceMutex;
    bool undoAnnounced = false;
    bool redoAnnounced = false;
};

} // namespace main
} // namespace qel
