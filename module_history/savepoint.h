#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QSet>
#include <QString>
#include <map>

namespace qel {
namespace history {

// A named moment of the application: one document per module, stored under the key of
// the history type that wrote it ("positions", "selection", ...).
class Savepoint
{
public:
    explicit Savepoint(const QString& name, const QDateTime& time = QDateTime::currentDateTime());

    QString getName() const { return name; }
    void setName(const QString& newName) { name = newName; }
    QDateTime getTime() const { return time; }

    // A second document under the same key replaces the first.
    void addData(const QString& key, const QByteArray& data);
    // Empty when the savepoint holds nothing under the key.
    QByteArray getData(const QString& key) const;
    bool hasData(const QString& key) const;
    QSet<QString> getKeys() const;

private:
    QString name;
    QDateTime time;
    std::map<QString, QByteArray> documents;
};

} // namespace history
} // namespace qel
