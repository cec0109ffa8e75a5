#pragma once

#include "kernel/events/eventhandler.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <initializer_list>
#include <vector>

namespace qel {
namespace test {

// Records the events of the given ids, in firing order, while it lives.
class EventRecorder
{
public:
    struct Record
    {
        unsigned long id;
        void* data;
        void* source;
    };

    explicit EventRecorder(std::initializer_list<unsigned long> ids)
    {
        for (unsigned long id : ids)
            main::EventManager::getInstance()->registerEventFunction(
                id, new main::EventManager::EventFunction([this](const main::Event* event) { record(event); }), this);
    }
    ~EventRecorder() { main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this); }
    EventRecorder(const EventRecorder&) = delete;
    EventRecorder& operator=(const EventRecorder&) = delete;

    // Names of the recorded events, in order.
    QStringList names() const
    {
        QStringList list;
        for (const Record& record : records)
            list << events::EventHandler::getInstance()->getEventName(record.id);
        return list;
    }
    void clear() { records.clear(); }

    std::vector<Record> records;
    // Called inside the event, for data that lives only as long as the event.
    std::function<void(const main::Event*)> onEvent;

private:
    void record(const main::Event* event)
    {
        records.push_back(Record{event->getID(), event->getData(), event->getSource()});
        if (onEvent)
            onEvent(event);
    }
};

} // namespace test
} // namespace qel
