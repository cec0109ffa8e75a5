#pragma once

#include <QSet>
#include <QString>

namespace qel {
namespace history {

class Savepoint;

// Data of the "History" events: which documents of which savepoint the event is about.
// Lives only during the event; a listener copies what it keeps.
struct SavepointEventData
{
    const QSet<QString>* keys;
    Savepoint* savepoint;
};

} // namespace history
} // namespace qel
