#include "kernel/util/meminfo.h"

#include "kernel/log/logger.h"

#include <QFile>
#include <QMap>
#include <QStringList>

namespace qel {
namespace util {

namespace {

// Values of /proc/meminfo are given in kB (1024 bytes) whatever the unit's name says.
QMap<QString, unsigned long> readKilobyteFields(const QString& meminfo)
{
    QMap<QString, unsigned long> fields;
    const QStringList lines = meminfo.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const int colon = line.indexOf(QLatin1Char(':'));
        if (colon <= 0)
            continue;
        const QStringList parts = line.mid(colon + 1).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        bool ok = false;
        const unsigned long value = parts.isEmpty() ? 0 : parts.first().toULong(&ok);
        if (ok)
            fields.insert(line.left(colon).trimmed(), value);
    }
    return fields;
}

} // namespace

unsigned long MemInfo::parseAvailableMemory(const QString& meminfo)
{
    const QMap<QString, unsigned long> fields = readKilobyteFields(meminfo);
    unsigned long kilobytes = 0;
    if (fields.contains(QStringLiteral("MemAvailable")))
        kilobytes = fields.value(QStringLiteral("MemAvailable"));
    else // kernels before 3.14 have no estimate of their own
        kilobytes = fields.value(QStringLiteral("MemFree")) + fields.value(QStringLiteral("Buffers"))
                    + fields.value(QStringLiteral("Cached"));
    return kilobytes * 1024UL;
}

unsigned long MemInfo::getAvailableMemory()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qel::log::Logger::log(1000, "kernel/util/meminfo", 52, "qel::util::MemInfo::getAvailableMemory", nullptr,
                              "Couldn't read /proc/meminfo: %s", qPrintable(file.errorString()));
        return 0;
    }
    return parseAvailableMemory(QString::fromLatin1(file.readAll()));
}

} // namespace util
} // namespace qel
