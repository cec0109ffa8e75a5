#include "module_history/historyhandler.h"

#include "kernel/events/eventhandler.h"
#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_history/historyevents.h"
#include "module_history/savepoint.h"
#include "module_history/savepointeventdata.h"

#include <QMutexLocker>
#include <algorithm>

namespace qel {
namespace history {

HistoryHandler* HistoryHandler::getInstance()
{
    static HistoryHandler instance;
    return &instance;
}

HistoryHandler::HistoryHandler()
{
    events::EventHandler::getInstance()->registerEventTypes("History");
}

HistoryHandler::~HistoryHandler() = default;

bool HistoryHandler::registerType(const QString& key, SaveFunction* save, const QString& displayName,
                                  const QIcon& icon)
{
    std::shared_ptr<SaveFunction> function(save);
    QMutexLocker locker(&mutex);
    if (types.count(key)) {
        log::Logger::log(0, "module_history/historyhandler", __LINE__,
                         "qel::history::HistoryHandler::registerType", nullptr,
                         "'%s' is already registered as a history type", qPrintable(key));
        return false;
    }
    types[key] = HistoryType{function, displayName, icon};
    return true;
}

bool HistoryHandler::unregisterType(const QString& key)
{
    QMutexLocker locker(&mutex);
    return types.erase(key) > 0;
}

bool HistoryHandler::isTypeRegistered(const QString& key) const
{
    QMutexLocker locker(&mutex);
    return types.count(key) > 0;
}

QStringList HistoryHandler::getTypes() const
{
    QMutexLocker locker(&mutex);
    QStringList keys;
    for (const auto& entry : types)
        keys << entry.first;
    return keys;
}

QString HistoryHandler::getDisplayName(const QString& key) const
{
    QMutexLocker locker(&mutex);
    auto found = types.find(key);
    return found == types.end() ? QString() : found->second.displayName;
}

QIcon HistoryHandler::getIcon(const QString& key) const
{
    QMutexLocker locker(&mutex);
    auto found = types.find(key);
    return found == types.end() ? QIcon() : found->second.icon;
}

Savepoint* HistoryHandler::addSavepoint(const QString& name)
{
    std::vector<std::shared_ptr<SaveFunction>> saveFunctions;
    {
        QMutexLocker locker(&mutex);
        for (const auto& entry : types)
            saveFunctions.push_back(entry.second.save);
    }
    auto savepoint = std::make_unique<Savepoint>(name);
    // The save functions may ask the handler about types, so no lock is held while they run.
    for (const auto& save : saveFunctions) {
        if (save && !save->empty())
            (*save)(savepoint.get());
    }
    Savepoint* added = savepoint.get();
    {
        QMutexLocker locker(&mutex);
        savepoints.push_back(std::move(savepoint));
    }
    const QSet<QString> keys = added->getKeys();
    fire(SAVEPOINT_NEW, added, &keys);
    return added;
}

bool HistoryHandler::restoreSavepoint(Savepoint* savepoint)
{
    const QSet<QString> keys = hasSavepoint(savepoint) ? savepoint->getKeys() : QSet<QString>();
    return restoreSavepoint(savepoint, keys);
}

bool HistoryHandler::restoreSavepoint(Savepoint* savepoint, const QSet<QString>& keys)
{
    if (!hasSavepoint(savepoint)) {
        log::Logger::log(2000, "module_history/historyhandler", __LINE__,
                         "qel::history::HistoryHandler::restoreSavepoint", nullptr,
                         "Savepoint %p is not known and can't be restored", static_cast<void*>(savepoint));
        return false;
    }
    fire(SAVEPOINT_RESTORE, savepoint, &keys);
    return true;
}

bool HistoryHandler::removeSavepoint(Savepoint* savepoint)
{
    std::unique_ptr<Savepoint> removed = takeSavepoint(savepoint);
    if (!removed) {
        log::Logger::log(2000, "module_history/historyhandler", __LINE__,
                         "qel::history::HistoryHandler::removeSavepoint", nullptr,
                         "Savepoint %p is not known and can't be removed", static_cast<void*>(savepoint));
        return false;
    }
    const QSet<QString> keys = removed->getKeys();
    fire(SAVEPOINT_REMOVE, removed.get(), &keys);
    return true;
}

void HistoryHandler::clearSavepoints()
{
    std::vector<std::unique_ptr<Savepoint>> removed;
    {
        QMutexLocker locker(&mutex);
        removed.swap(savepoints);
    }
    for (const auto& savepoint : removed) {
        const QSet<QString> keys = savepoint->getKeys();
        fire(SAVEPOINT_REMOVE, savepoint.get(), &keys);
    }
}

std::vector<Savepoint*> HistoryHandler::getSavepoints() const
{
    QMutexLocker locker(&mutex);
    std::vector<Savepoint*> list;
    for (const auto& savepoint : savepoints)
        list.push_back(savepoint.get());
    return list;
}

bool HistoryHandler::hasSavepoint(const Savepoint* savepoint) const
{
    QMutexLocker locker(&mutex);
    return std::any_of(savepoints.begin(), savepoints.end(),
                       [savepoint](const std::unique_ptr<Savepoint>& held) { return held.get() == savepoint; });
}

std::unique_ptr<Savepoint> HistoryHandler::takeSavepoint(Savepoint* savepoint)
{
    QMutexLocker locker(&mutex);
    auto found = std::find_if(savepoints.begin(), savepoints.end(),
                              [savepoint](const std::unique_ptr<Savepoint>& held) { return held.get() == savepoint; });
    if (found == savepoints.end())
        return nullptr;
    std::unique_ptr<Savepoint> taken = std::move(*found);
    savepoints.erase(found);
    return taken;
}

void HistoryHandler::fire(unsigned long id, Savepoint* savepoint, const QSet<QString>* keys)
{
    SavepointEventData data{keys, savepoint};
    main::Event event(id, &data, this, false);
    main::EventManager::getInstance()->fireEvent(event);
}

} // namespace history
} // namespace qel
