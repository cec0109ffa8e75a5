#include "kernel/main/undoredomanager.h"

#include "kernel/events/eventhandler.h"
#include "kernel/log/logger.h"
#include "kernel/main/eventmanager.h"

#include <QMutexLocker>
#include <exception>

namespace qel {
namespace main {

namespace {

void fireGlobal(const char* name, UndoRedoManager* source)
{
    Event event(qel::events::EventHandler::getInstance()->addEvent("Global", name), nullptr, source);
    EventManager::getInstance()->fireEvent(event);
}

void deleteAll(std::vector<Memento*>& mementos)
{
    for (Memento* memento : mementos)
        delete memento;
    mementos.clear();
}

} // namespace

UndoRedoManager* UndoRedoManager::getInstance()
{
    static UndoRedoManager instance;
    return &instance;
}

UndoRedoManager::~UndoRedoManager()
{
    deleteAll(undoStack);
    deleteAll(redoStack);
}

void UndoRedoManager::addMemento(Memento* memento)
{
    if (!memento) {
        qel::log::Logger::log(0, "kernel/main/undoredomanager", __LINE__, "qel::main::UndoRedoManager::addMemento",
                              nullptr, "Null memento ignored");
        return;
    }
    std::vector<Memento*> dropped;
    {
        QMutexLocker locker(&mutex);
        undoStack.push_back(memento);
        dropped.swap(redoStack);
    }
    deleteAll(dropped);
    announceAvailability();
}

bool UndoRedoManager::undo()
{
    return step(undoStack, redoStack, "qel::main::UndoRedoManager::undo");
}

bool UndoRedoManager::redo()
{
    return step(redoStack, undoStack, "qel::main::UndoRedoManager::redo");
}

// The opposite is captured before restore() changes the state it has to capture.
bool UndoRedoManager::step(std::vector<Memento*>& from, std::vector<Memento*>& to, const char* function)
{
    Memento* memento = nullptr;
    {
        QMutexLocker locker(&mutex);
        if (from.empty())
            return false;
        memento = from.back();
        from.pop_back();
    }
    Memento* opposite = nullptr;
    bool restored = false;
    try {
        opposite = memento->createOpposite();
        memento->restore();
        restored = true;
    } catch (const std::exception& e) {
        qel::log::Logger::log(1000, "kernel/main/undoredomanager", __LINE__, function, nullptr,
                              "Undo step failed: %s", e.what());
    } catch (...) {
        qel::log::Logger::log(1000, "kernel/main/undoredomanager", __LINE__, function, nullptr,
                              "Undo step failed");
    }
    delete memento;
    if (restored && opposite) {
        QMutexLocker locker(&mutex);
        to.push_back(opposite);
    } else {
        delete opposite;
    }
    announceAvailability();
    return restored;
}

bool UndoRedoManager::canUndo() const
{
    QMutexLocker locker(&mutex);
    return !undoStack.empty();
}

bool UndoRedoManager::canRedo() const
{
    QMutexLocker locker(&mutex);
    return !redoStack.empty();
}

size_t UndoRedoManager::undoCount() const
{
    QMutexLocker locker(&mutex);
    return undoStack.size();
}

size_t UndoRedoManager::redoCount() const
{
    QMutexLocker locker(&mutex);
    return redoStack.size();
}

void UndoRedoManager::clear()
{
    std::vector<Memento*> undone;
    std::vector<Memento*> redone;
    {
        QMutexLocker locker(&mutex);
        undone.swap(undoStack);
        redone.swap(redoStack);
    }
    deleteAll(undone);
    deleteAll(redone);
    announceAvailability();
}

// Serialised so that two threads can't announce the same change twice or out of order.
void UndoRedoManager::announceAvailability()
{
    QMutexLocker announcing(&announceMutex);
    const bool undoNow = canUndo();
    const bool redoNow = canRedo();
    if (undoNow != undoAnnounced) {
        undoAnnounced = undoNow;
        fireGlobal(undoNow ? "UNDO_AVAILABLE" : "UNDO_NOT_AVAILABLE", this);
    }
    if (redoNow != redoAnnounced) {
        redoAnnounced = redoNow;
        fireGlobal(redoNow ? "REDO_AVAILABLE" : "REDO_NOT_AVAILABLE", this);
    }
}

} // namespace main
} // namespace qel
