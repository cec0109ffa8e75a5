#include "benchoptions.h"

#include <utility>

BenchOptions::BenchOptions(std::map<QString, QString> defaults) : values(std::move(defaults))
{
    values.emplace(QStringLiteral("json"), QString());
}

bool BenchOptions::parse(int argc, char** argv)
{
    for (int i = 1; i < argc; i += 2) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        if (!argument.startsWith(QLatin1String("--")) || i + 1 >= argc)
            return false;
        auto found = values.find(argument.mid(2));
        if (found == values.end())
            return false;
        found->second = QString::fromLocal8Bit(argv[i + 1]);
    }
    return true;
}

QString BenchOptions::text(const QString& name) const
{
    auto found = values.find(name);
    return found == values.end() ? QString() : found->second;
}

long long BenchOptions::number(const QString& name) const
{
    return text(name).toLongLong();
}

double BenchOptions::secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
