#include "module_scene/sceneelementfactory.h"

#include "kernel/log/logger.h"

#include <QMutexLocker>

namespace qel {
namespace scene {

SceneElementFactory::Register::Register(const QString& key, Creator creator) : key(&key)
{
    SceneElementFactory::getInstance()->registerElement(key, creator);
}

SceneElementFactory::Register::~Register()
{
    SceneElementFactory::getInstance()->unregisterElement(*key);
}

SceneElementFactory* SceneElementFactory::getInstance()
{
    static SceneElementFactory instance;
    return &instance;
}

bool SceneElementFactory::registerElement(const QString& key, Creator creator)
{
    QMutexLocker locker(&mutex);
    if (creators.count(key)) {
        log::Logger::log(0, "module_scene/sceneelementfactory", 54,
                         "qel::scene::SceneElementFactory::registerElement", nullptr,
                         "'%s' is already registered as an SceneElementName", qPrintable(key));
        return false;
    }
    creators[key] = creator;
    return true;
}

bool SceneElementFactory::unregisterElement(const QString& key)
{
    QMutexLocker locker(&mutex);
    return creators.erase(key) > 0;
}

bool SceneElementFactory::isRegistered(const QString& key) const
{
    QMutexLocker locker(&mutex);
    return creators.count(key) > 0;
}

SceneElement* SceneElementFactory::createElement(const QString& key) const
{
    Creator creator = nullptr;
    {
        QMutexLocker locker(&mutex);
        auto found = creators.find(key);
        if (found == creators.end())
            return nullptr;
        creator = found->second;
    }
    // Outside the lock: an element's constructor may ask the factory itself.
    return creator ? creator() : nullptr;
}

QStringList SceneElementFactory::getRegisteredKeys() const
{
    QMutexLocker locker(&mutex);
    QStringList keys;
    for (const auto& entry : creators)
        keys << entry.first;
    return keys;
}

} // namespace scene
} // namespace qel
