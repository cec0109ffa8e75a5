#include "module_scene/scenelocker.h"

#include "module_scene/scene.h"

namespace qel {
namespace scene {

SceneLocker::SceneLocker(Scene* scene, LOCKTYPE type) : scene(scene), type(type), count(1)
{
    takeLocks();
}

SceneLocker::SceneLocker(const SceneLocker& other)
    : scene(other.scene), type(other.type), count(other.count.loadAcquire())
{
}

SceneLocker::~SceneLocker()
{
    if (count.loadAcquire() == 1)
        releaseLocks();
}

void SceneLocker::lock()
{
    count.ref();
    takeLocks();
}

void SceneLocker::unlock()
{
    count.deref();
    releaseLocks();
}

void SceneLocker::takeLocks()
{
    if (scene.isNull())
        return;
    if (type & LOCK_ELEMENTS)
        scene->lock();
    if (type & LOCK_TRANSFORM)
        scene->transformLock();
    if (type & LOCK_STRUCTURE)
        scene->structureLock();
}

void SceneLocker::releaseLocks()
{
    if (scene.isNull())
        return;
    if (type & LOCK_STRUCTURE)
        scene->structureUnlock();
    if (type & LOCK_TRANSFORM)
        scene->transformUnlock();
    if (type & LOCK_ELEMENTS)
        scene->unlock();
}

} // namespace scene
} // namespace qel
