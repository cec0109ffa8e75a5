#pragma once

#include "kernel/util/zpointer.h"

#include <QAtomicInt>
#include <cstdint>

namespace qel {
namespace scene {

class Scene;

// Scoped guard over the scene's locks: element, transform and structure, taken in that
// order and released in reverse.
class SceneLocker
{
public:
    enum LOCKTYPE : uint32_t {
        LOCK_ELEMENTS = 1,
        LOCK_TRANSFORM = 2,
        LOCK_STRUCTURE = 4,
        LOCK_ALL = LOCK_ELEMENTS | LOCK_TRANSFORM | LOCK_STRUCTURE
    };

    SceneLocker(Scene* scene, LOCKTYPE type);
    // Shares the locks of the other without taking them again.
    SceneLocker(const SceneLocker& other);
    // Releases only a guard that is locked exactly once.
    ~SceneLocker();

    void lock();
    void unlock();

private:
    SceneLocker& operator=(const SceneLocker&) = delete;

    void takeLocks();
    void releaseLocks();

    util::ZPointer<Scene> scene;
    LOCKTYPE type;
    QAtomicInt count;
};

} // namespace scene
} // namespace qel
