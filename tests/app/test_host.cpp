// End-to-end tests of the qel executable, as a user runs it.
#include "app/hostprocess.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <csignal>
#include <sys/stat.h>

using namespace qel::test;

namespace {

QString writeScript(const QTemporaryDir& dir, const QString& name, const QStringList& lines)
{
    return qel::test::writeScript(dir.filePath(name), lines);
}

QProcessEnvironment withoutDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    return environment;
}

// The process's "stat" line split after the command name, which may hold blanks:
// state, parent, ...; empty when the process is gone.
QStringList statusFields(const QString& pid, QString* command = nullptr)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString line = QString::fromLatin1(file.readAll());
    const int open = line.indexOf(QLatin1Char('('));
    const int close = line.lastIndexOf(QLatin1Char(')'));
    if (open < 0 || close < open)
        return {};
    if (command)
        *command = line.mid(open + 1, close - open - 1);
    return line.mid(close + 2).split(QLatin1Char(' '));
}

// A child of `parent` running `name`, waited for up to `timeoutMs`; 0 if none came.
qint64 childNamed(qint64 parent, const QString& name, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    do {
        for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            QString command;
            const QStringList fields = statusFields(pid, &command);
            if (fields.size() > 1 && command == name && fields[1].toLongLong() == parent)
                return pid.toLongLong();
        }
        QThread::msleep(50);
    } while (clock.elapsed() < timeoutMs);
    return 0;
}

// Gone, or dead and waiting for an adoptive parent to collect it.
bool endsWithin(qint64 pid, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    do {
        const QStringList fields = statusFields(QString::number(pid));
        if (fields.isEmpty() || fields[0] == QLatin1String("Z"))
            return true;
        QThread::msleep(50);
    } while (clock.elapsed() < timeoutMs);
    return false;
}

} // namespace

TEST(Host, ListsTheHostAndModuleCommands)
{
    const HostRun result = runHost({QStringLiteral("--offscreen"), QStringLiteral("--list-commands")});
    ASSERT_EQ(0, result.exitCode) << result.err.toStdString();
    const QStringList lines = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const char* name : {"undo", "redo", "recordmacro", "stopmacro", "runmacro"}) {
        const bool listed = std::any_of(lines.begin(), lines.end(), [name](const QString& line) {
            return line == QLatin1String(name) || line.startsWith(QLatin1String(name) + QLatin1Char(' '));
        });
        EXPECT_TRUE(listed) << name << " missing from:\n" << result.out.toStdString();
    }
}

TEST(Host, BadScriptLinesStopTheRunWithAClearError)
{
    QTemporaryDir dir;
    const struct
    {
        const char* line;
        const char* expected;
    } cases[] = {
        {"frobnicate(1,2)", "frobnicate"},
        {"recordmacro(", "recordmacro("},
        {"stopmacro(1,2,3)", "stopmacro"},
    };
    for (const auto& entry : cases) {
        const QString script = writeScript(dir, QStringLiteral("bad.qel"), {QLatin1String(entry.line)});
        const HostRun result = runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), script});
        EXPECT_NE(0, result.exitCode) << entry.line;
        EXPECT_TRUE(result.err.contains(QLatin1String(entry.expected))) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(QStringLiteral("bad.qel:1"))) << result.err.toStdString();
    }
}

TEST(Host, RecordsAMacroAndRunsItAgain)
{
    QTemporaryDir dir;
    const QString macro = dir.filePath(QStringLiteral("recorded.qel"));
    const QString script = writeScript(dir, QStringLiteral("record.qel"),
                                       {QStringLiteral("# comment lines and blanks are skipped"), QString(),
                                        QStringLiteral("recordmacro(%1)").arg(macro), QStringLiteral("undo"),
                                        QStringLiteral("redo"), QStringLiteral("stopmacro")});
    const HostRun recording = runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), script});
    ASSERT_EQ(0, recording.exitCode) << recording.err.toStdString();
    QFile file(macro);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString recorded = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(recorded.contains(QStringLiteral("undo"))) << recorded.toStdString();
    EXPECT_TRUE(recorded.contains(QStringLiteral("redo"))) << recorded.toStdString();

    const QString replay = writeScript(dir, QStringLiteral("replay.qel"), {QStringLiteral("runmacro(%1)").arg(macro)});
    const HostRun replayed = runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), replay});
    EXPECT_EQ(0, replayed.exitCode) << replayed.err.toStdString();
}

TEST(Host, RejectsBadOptions)
{
    EXPECT_EQ(2, runHost({QStringLiteral("--log-level"), QStringLiteral("loud")}).exitCode);
    EXPECT_EQ(2, runHost({QStringLiteral("--no-such-option")}).exitCode);
    const HostRun missing = runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), QStringLiteral("/nonexistent/file.qel")});
    EXPECT_NE(0, missing.exitCode);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("/nonexistent/file.qel")));
}

TEST(Host, StartsItsOwnXServerWhenNoDisplayIsReachable)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":4711"));
    const HostRun result = runHost({QStringLiteral("--offscreen"), QStringLiteral("--list-commands")}, environment);
    EXPECT_EQ(0, result.exitCode) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains(QStringLiteral("undo")));
}

// The usage is written before anything else is started, with or without a display.
TEST(Host, PrintsItsUsageOnHelp)
{
    for (const QProcessEnvironment& environment : {QProcessEnvironment::systemEnvironment(), withoutDisplay()}) {
        for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")}) {
            const HostRun result = runHost({option}, environment);
            EXPECT_EQ(0, result.exitCode) << result.err.toStdString();
            EXPECT_TRUE(result.out.startsWith(QStringLiteral("Usage: "))) << result.out.toStdString();
            for (const char* listed : {"--run", "--offscreen", "--dump-scene", "--log-level", "FILE"})
                EXPECT_TRUE(result.out.contains(QLatin1String(listed))) << listed << "\n" << result.out.toStdString();
        }
    }
}

// A host that is killed has no chance to stop its X server: the server must go by itself.
TEST(Host, ItsOwnXServerEndsWhenTheHostIsKilled)
{
    QTemporaryDir dir;
    // A script that is a pipe nobody writes to: the host waits for its first line for ever.
    const QString script = dir.filePath(QStringLiteral("never.qel"));
    ASSERT_EQ(0, ::mkfifo(QFile::encodeName(script).constData(), 0600));
    QProcess host;
    host.setProcessEnvironment(withoutDisplay());
    host.start(QStringLiteral(QEL_EXECUTABLE), {QStringLiteral("--offscreen"), QStringLiteral("--run"), script});
    ASSERT_TRUE(host.waitForStarted());
    const qint64 server = childNamed(host.processId(), QStringLiteral("Xvfb"), 30000);
    EXPECT_NE(0, server) << "the host started no X server";
    ::kill(static_cast<pid_t>(host.processId()), SIGKILL);
    ASSERT_TRUE(host.waitForFinished(10000));
    EXPECT_EQ(QProcess::CrashExit, host.exitStatus());
    if (server) {
        EXPECT_TRUE(endsWithin(server, 10000)) << "Xvfb " << server << " outlived its host";
    }
}

TEST(Host, OpensTheMeshFilesNamedOnTheCommandLine)
{
    const QString sample = QStringLiteral(QEL_SOURCE_DIR "/samples/sample.ply");
    const HostRun result = runHost({QStringLiteral("--offscreen"), sample, sample, QStringLiteral("--dump-scene"),
                                    QStringLiteral("-")});
    ASSERT_EQ(0, result.exitCode) << result.err.toStdString();
    // Two models: the second gets a free name.
    EXPECT_TRUE(result.out.contains(QStringLiteral("\"name\": \"sample\""))) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains(QStringLiteral("\"name\": \"sample_1\""))) << result.out.toStdString();

    const HostRun missing = runHost({QStringLiteral("--offscreen"), QStringLiteral("/nonexistent/model.stl")});
    EXPECT_TRUE(missing.err.contains(QStringLiteral("/nonexistent/model.stl"))) << missing.err.toStdString();
}
