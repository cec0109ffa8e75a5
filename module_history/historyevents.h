#pragma once

#include "kernel/events/eventhandler.h"

namespace qel {
namespace history {

// Ids of the "History" group. Inline variables: a static initialiser of any file that
// includes this header sees them already set.
inline const unsigned long SAVEPOINT_NEW = events::EventHandler::getInstance()->addEvent("History", "SAVEPOINT_NEW");
inline const unsigned long SAVEPOINT_REMOVE =
    events::EventHandler::getInstance()->addEvent("History", "SAVEPOINT_REMOVE");
inline const unsigned long SAVEPOINT_RESTORE =
    events::EventHandler::getInstance()->addEvent("History", "SAVEPOINT_RESTORE");

} // namespace history
} // namespace qel
