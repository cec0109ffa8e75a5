#pragma once

#include <QIcon>
#include <QMutex>
#include <QSet>
#include <QString>
#include <QStringList>
#include <boost/function.hpp>
#include <map>
#include <memory>
#include <vector>

namespace qel {
namespace history {

class Savepoint;

// Keeps the savepoints of the application. Modules register history types, each with a
// function that writes the type's document into a new savepoint; restoring a savepoint
// fires SAVEPOINT_RESTORE and the modules apply their documents themselves.
// Events carry a SavepointEventData and have the handler as source; they are fired
// without any lock held, so listeners may call back.
class HistoryHandler
{
public:
    typedef boost::function<void(Savepoint*)> SaveFunction;

    static HistoryHandler* getInstance();
    ~HistoryHandler();
    HistoryHandler(const HistoryHandler&) = delete;
    HistoryHandler& operator=(const HistoryHandler&) = delete;

    // Takes over the function object, also when the key is refused.
    bool registerType(const QString& key, SaveFunction* save, const QString& displayName, const QIcon& icon);
    bool unregisterType(const QString& key);
    bool isTypeRegistered(const QString& key) const;
    QStringList getTypes() const;
    QString getDisplayName(const QString& key) const;
    QIcon getIcon(const QString& key) const;

    // A new savepoint filled by the save function of every registered type; owned here.
    Savepoint* addSavepoint(const QString& name);
    // Restores the documents of the given keys (all documents of the savepoint without keys).
    bool restoreSavepoint(Savepoint* savepoint);
    bool restoreSavepoint(Savepoint* savepoint, const QSet<QString>& keys);
    // SAVEPOINT_REMOVE is fired while the savepoint still lives; then it is deleted.
    bool removeSavepoint(Savepoint* savepoint);
    void clearSavepoints();

    std::vector<Savepoint*> getSavepoints() const;
    bool hasSavepoint(const Savepoint* savepoint) const;

private:
    HistoryHandler();

    struct HistoryType
    {
        std::shared_ptr<SaveFunction> save;
        QString displayName;
        QIcon icon;
    };

    std::unique_ptr<Savepoint> takeSavepoint(Savepoint* savepoint);
    void fire(unsigned long id, Savepoint* savepoint, const QSet<QString>* keys);

    mutable QMutex mutex;
    std::map<QString, HistoryType> types;
    std::vector<std::unique_ptr<Savepoint>> savepoints;
};

} // namespace history
} // namespace qel
