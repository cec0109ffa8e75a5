#include "module_history/savepoint.h"

namespace qel {
namespace history {

Savepoint::Savepoint(const QString& name, const QDateTime& time) : name(name), time(time) {}

void Savepoint::addData(const QString& key, const QByteArray& data)
{
    documents[key] = data;
}

QByteArray Savepoint::getData(const QString& key) const
{
    auto found = documents.find(key);
    return found == documents.end() ? QByteArray() : found->second;
}

bool Savepoint::hasData(const QString& key) const
{
    return documents.count(key) > 0;
}

QSet<QString> Savepoint::getKeys() const
{
    QSet<QString> keys;
    for (const auto& entry : documents)
        keys.insert(entry.first);
    return keys;
}

} // namespace history
} // namespace qel
