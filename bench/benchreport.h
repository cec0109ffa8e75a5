#pragma once

#include <QString>
#include <utility>
#include <vector>

// The figures of one benchmark run: printed as a table, written as a flat JSON object.
class BenchReport
{
public:
    explicit BenchReport(const QString& title) : title(title) {}

    void add(const QString& key, double value, const QString& unit = QString());
    void print() const;
    // One line under the table: what the figures should meet, and whether they do.
    static void printTarget(const char* text, bool met);
    // Returns false and says why on stderr when the file can't be written.
    bool writeJson(const QString& path) const;

private:
    struct Row
    {
        QString key;
        double value;
        QString unit;
    };
    QString title;
    std::vector<Row> rows;
};
