#pragma once

#include <QMutex>
#include <QString>
#include <map>
#include <set>
#include <utility>

namespace qel {
namespace events {

// Names events: the same group and name always give the same id. Safe to use from
// static initialisers of any library.
class EventHandler
{
public:
    static EventHandler* getInstance();

    unsigned long addEvent(const char* group, const char* name);
    // 0 when the event was never added.
    unsigned long getEventID(const QString& group, const QString& name) const;
    QString getEventName(unsigned long id) const;
    QString getEventGroup(unsigned long id) const;

    void registerEventTypes(const char* group);
    void unregisterEventTypes(const char* group);
    bool isEventTypeRegistered(const QString& group) const;

private:
    EventHandler() = default;

    mutable QMutex mutex;
    std::map<std::pair<QString, QString>, unsigned long> ids;
    std::map<unsigned long, std::pair<QString, QString>> names;
    std::set<QString> activeGroups;
    unsigned long nextId = 1;
};

} // namespace events
} // namespace qel
