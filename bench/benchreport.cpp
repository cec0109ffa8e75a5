#include "benchreport.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

void BenchReport::add(const QString& key, double value, const QString& unit)
{
    rows.push_back({key, value, unit});
}

void BenchReport::print() const
{
    std::printf("%s\n", title.toLocal8Bit().constData());
    for (const Row& row : rows)
        std::printf("  %-24s %16.6g %s\n", row.key.toLocal8Bit().constData(), row.value,
                    row.unit.toLocal8Bit().constData());
    std::fflush(stdout);
}

void BenchReport::printTarget(const char* text, bool met)
{
    std::printf("  target: %-44s %s\n", text, met ? "met" : "MISSED");
}

bool BenchReport::writeJson(const QString& path) const
{
    QJsonObject object;
    for (const Row& row : rows)
        object.insert(row.key, row.value);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        std::fprintf(stderr, "qel-bench: cannot write %s: %s\n", path.toLocal8Bit().constData(),
                     file.errorString().toLocal8Bit().constData());
        return false;
    }
    file.write(QJsonDocument(object).toJson());
    return true;
}
