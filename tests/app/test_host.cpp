// End-to-end tests of the qel executable, as a user runs it.
#include "app/hostprocess.h"

#include <QTemporaryDir>
#include <algorithm>

using namespace qel::test;

namespace {

QString writeScript(const QTemporaryDir& dir, const QString& name, const QStringList& lines)
{
    return qel::test::writeScript(dir.filePath(name), lines);
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
