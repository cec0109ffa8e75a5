#include "kernel/main/eventmanager.h"

#include <QMutexLocker>
#include <algorithm>

namespace qel {
namespace main {

EventManager* EventManager::getInstance()
{
    static EventManager instance;
    return &instance;
}

void EventManager::fireEvent(Event& event)
{
    std::vector<RegistrationPtr> targets;
    {
        QMutexLocker locker(&mutex);
        auto found = registrations.find(event.getID());
        if (found == registrations.end())
            return;
        for (const RegistrationPtr& registration : found->second) {
            if (!registration->source || registration->source == event.getSource())
                targets.push_back(registration);
        }
    }
    // Called without the lock: handlers fire events and (un)register themselves.
    for (const RegistrationPtr& registration : targets) {
        bool active;
        {
            QMutexLocker locker(&mutex);
            active = registration->active;
        }
        if (active && registration->function && !registration->function->empty())
            (*registration->function)(&event);
    }
}

void EventManager::registerEventFunction(unsigned long id, const EventFunction* function, const void* owner,
                                         const void* source)
{
    auto registration = std::make_shared<Registration>();
    registration->owner = owner;
    registration->source = source;
    registration->function.reset(function);
    QMutexLocker locker(&mutex);
    registrations[id].push_back(registration);
}

void EventManager::unregisterEventFunction(unsigned long id, const void* owner, const void* source)
{
    QMutexLocker locker(&mutex);
    auto found = registrations.find(id);
    if (found == registrations.end())
        return;
    auto& list = found->second;
    for (const RegistrationPtr& registration : list) {
        if (registration->owner == owner && registration->source == source)
            registration->active = false;
    }
    list.erase(std::remove_if(list.begin(), list.end(), [](const RegistrationPtr& r) { return !r->active; }),
               list.end());
}

void EventManager::unregisterAllEventFunctionsOf(const void* owner)
{
    QMutexLocker locker(&mutex);
    for (auto& entry : registrations) {
        auto& list = entry.second;
        for (const RegistrationPtr& registration : list) {
            if (registration->owner == owner)
                registration->active = false;
        }
        list.erase(std::remove_if(list.begin(), list.end(), [](const RegistrationPtr& r) { return !r->active; }),
                   list.end());
    }
}

size_t EventManager::countEventFunctions(unsigned long id) const
{
    QMutexLocker locker(&mutex);
    auto found = registrations.find(id);
    return found == registrations.end() ? 0 : found->second.size();
}

} // namespace main
} // namespace qel
