#pragma once

#include <QString>
#include <chrono>
#include <map>

// The "--name value" options of a sub-command. Only the names given with their defaults
// are accepted; "--json FILE" is always known.
class BenchOptions
{
public:
    explicit BenchOptions(std::map<QString, QString> defaults);

    // False for an unknown name or a name without a value.
    bool parse(int argc, char** argv);
    QString text(const QString& name) const;
    long long number(const QString& name) const;

    static double secondsSince(std::chrono::steady_clock::time_point start);

private:
    std::map<QString, QString> values;
};
