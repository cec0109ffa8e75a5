#pragma once

// Runs the qel executable as a user would, for the end-to-end tests.
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTextStream>
#include <gtest/gtest.h>

namespace qel {
namespace test {

struct HostRun
{
    int exitCode = -1; // -1 when the process crashed or timed out
    QString out;
    QString err;
};

inline HostRun runHost(const QStringList& arguments,
                       const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QEL_EXECUTABLE), arguments);
    HostRun run;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        run.err = QStringLiteral("timed out");
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

// Writes one command string a line and returns the path.
inline QString writeScript(const QString& path, const QStringList& lines)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate)) << path.toStdString();
    QTextStream(&file) << lines.join(QLatin1Char('\n')) << '\n';
    return path;
}

} // namespace test
} // namespace qel
