// Projects in the qel executable as users script them: saved, listed by tar, opened again
// by a second run and from the command line, and bad files refused with one message that
// names the file, stopping the script with a failing exit status.
#include "app/hostprocess.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using qel::test::HostRun;

namespace {

const QString Sample = QStringLiteral(QEL_SOURCE_DIR "/samples/sample.ply");

class ProjectEndToEnd : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    HostRun runScript(const QStringList& lines)
    {
        const QString script = qel::test::writeScript(dir.filePath(QStringLiteral("script.qel")), lines);
        return qel::test::runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), script});
    }

    QStringList listArchive(const QString& file)
    {
        QProcess tar;
        tar.start(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-tf"), file});
        tar.waitForFinished(60000);
        EXPECT_EQ(0, tar.exitCode()) << tar.readAllStandardError().toStdString();
        return QString::fromUtf8(tar.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QTemporaryDir dir;
};

TEST_F(ProjectEndToEnd, ASavedProjectIsATarArchiveThatOpensAgain)
{
    const QString file = dir.filePath(QStringLiteral("work.qelproj"));
    const HostRun saving = runScript({QStringLiteral("loadmodel(%1,sample)").arg(Sample),
                                      QStringLiteral("saveproject(%1)").arg(file), QStringLiteral("saveproject")});
    ASSERT_EQ(0, saving.exitCode) << saving.err.toStdString();
    ASSERT_TRUE(QFile::exists(file));
    EXPECT_TRUE(listArchive(file).contains(QStringLiteral("project.xml")));
    // Nothing but the project is left in the folder.
    EXPECT_EQ(QStringList({"script.qel", "work.qelproj"}),
              QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name));

    const HostRun opening = runScript({QStringLiteral("openproject(%1)").arg(file), QStringLiteral("newproject")});
    EXPECT_EQ(0, opening.exitCode) << opening.err.toStdString();

    const HostRun fromCommandLine = qel::test::runHost({QStringLiteral("--offscreen"), file});
    EXPECT_EQ(0, fromCommandLine.exitCode) << fromCommandLine.err.toStdString();
}

TEST_F(ProjectEndToEnd, BadProjectFilesStopTheScriptWithOneClearMessage)
{
    QFile text(dir.filePath(QStringLiteral("text.qelproj")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write(QByteArray("ply\nformat ascii 1.0\n").repeated(40));
    text.close();
    const struct
    {
        QString line;
        QString file;
        QString fault;
    } cases[] = {
        {QStringLiteral("openproject(%1)").arg(text.fileName()), text.fileName(), QStringLiteral("not a tar archive")},
        {QStringLiteral("openproject(%1)").arg(dir.filePath("missing.qelproj")), dir.filePath("missing.qelproj"),
         QStringLiteral("does not exist")},
        {QStringLiteral("saveproject(%1)").arg(dir.filePath("no/folder/x.qelproj")), dir.filePath("no/folder/x.qelproj"),
         QStringLiteral("does not exist")},
        {QStringLiteral("saveproject"), QString(), QStringLiteral("no file yet")},
    };
    for (const auto& entry : cases) {
        const HostRun result = runScript({entry.line, QStringLiteral("newproject")});
        EXPECT_NE(0, result.exitCode) << entry.line.toStdString();
        EXPECT_EQ(1, result.err.count(entry.fault)) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(entry.file)) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(QStringLiteral("script.qel:1"))) << result.err.toStdString();
    }
}

} // namespace
