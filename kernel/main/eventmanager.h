#pragma once

#include "kernel/main/event.h"

#include <QMutex>
#include <boost/function.hpp>
#include <map>
#include <memory>
#include <vector>

namespace qel {
namespace main {

// Global, synchronous event dispatch. fireEvent calls each matching function on the
// calling thread before it returns; functions may register and unregister while an
// event is being fired (an unregistered function is not called any more).
class EventManager
{
public:
    typedef boost::function<void(const Event*)> EventFunction;

    static EventManager* getInstance();

    void fireEvent(Event& event);

    // Takes over the function object. A null source listens to every source.
    void registerEventFunction(unsigned long id, const EventFunction* function, const void* owner,
                               const void* source = nullptr);
    void unregisterEventFunction(unsigned long id, const void* owner, const void* source = nullptr);
    void unregisterAllEventFunctionsOf(const void* owner);

    // Number of functions registered for an id (all owners and sources).
    size_t countEventFunctions(unsigned long id) const;

private:
    EventManager() = default;

    struct Registration
    {
        const void* owner;
        const void* source;
        std::unique_ptr<const EventFunction> function;
        bool active = true;
    };
    typedef std::shared_ptr<Registration> RegistrationPtr;

    mutable QMutex mutex;
    std::map<unsigned long, std::vector<RegistrationPtr>> registrations;
};

} // namespace main
} // namespace qel
