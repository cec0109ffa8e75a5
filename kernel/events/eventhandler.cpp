#include "kernel/events/eventhandler.h"

#include <QMutexLocker>

namespace qel {
namespace events {

EventHandler* EventHandler::getInstance()
{
    static EventHandler instance;
    return &instance;
}

unsigned long EventHandler::addEvent(const char* group, const char* name)
{
    const auto key = std::make_pair(QString::fromUtf8(group), QString::fromUtf8(name));
    QMutexLocker locker(&mutex);
    auto found = ids.find(key);
    if (found != ids.end())
        return found->second;
    const unsigned long id = nextId++;
    ids[key] = id;
    names[id] = key;
    return id;
}

unsigned long EventHandler::getEventID(const QString& group, const QString& name) const
{
    QMutexLocker locker(&mutex);
    auto found = ids.find(std::make_pair(group, name));
    return found == ids.end() ? 0 : found->second;
}

QString EventHandler::getEventName(unsigned long id) const
{
    QMutexLocker locker(&mutex);
    auto found = names.find(id);
    return found == names.end() ? QString() : found->second.second;
}

QString EventHandler::getEventGroup(unsigned long id) const
{
    QMutexLocker locker(&mutex);
    auto found = names.find(id);
    return found == names.end() ? QString() : found->second.first;
}

void EventHandler::registerEventTypes(const char* group)
{
    QMutexLocker locker(&mutex);
    activeGroups.insert(QString::fromUtf8(group));
}

void EventHandler::unregisterEventTypes(const char* group)
{
    QMutexLocker locker(&mutex);
    activeGroups.erase(QString::fromUtf8(group));
}

bool EventHandler::isEventTypeRegistered(const QString& group) const
{
    QMutexLocker locker(&mutex);
    return activeGroups.count(group) > 0;
}

} // namespace events
} // namespace qel
