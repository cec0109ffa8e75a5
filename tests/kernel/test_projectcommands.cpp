#include "kernel/fakeparticipant.h"
#include "kernel/io/projectmanager.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/hostcommands.h"
#include "support/logcapture.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using qel::io::ProjectManager;
using qel::main::Command;
using qel::main::CommandProcessor;
using qel::test::FakeParticipant;

namespace {

class ProjectCommandsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        processor.setMessageSink([this](const QString& message) { messages << message; });
        qel::main::registerHostCommands(&processor);
        manager->setCurrentFile(QString());
        manager->setModified(false);
        scene.live = QStringLiteral("scene");
        manager->addParticipant(&scene);
    }
    void TearDown() override
    {
        manager->removeParticipant(&scene);
        manager->setCurrentFile(QString());
        manager->setModified(false);
    }

    bool run(const QString& command) { return processor.executeCommand(command, Command::EXECUTE_SYNCHRONOUS, true); }

    ProjectManager* manager = ProjectManager::getInstance();
    CommandProcessor processor;
    QTemporaryDir folder;
    QStringList messages;
    FakeParticipant scene{QStringLiteral("scene")};
};

TEST_F(ProjectCommandsTest, SaveOpenAndNewWorkOnTheCurrentFile)
{
    const QString file = folder.filePath(QStringLiteral("a.qelproj"));
    ASSERT_TRUE(run(QStringLiteral("saveproject(%1)").arg(file))) << qPrintable(messages.join('\n'));
    EXPECT_TRUE(QFile::exists(file));
    EXPECT_EQ(file, manager->getCurrentFile());
    EXPECT_TRUE(messages.last().contains(QStringLiteral("saved")));

    scene.live = QStringLiteral("changed");
    manager->setModified(true);
    ASSERT_TRUE(run(QStringLiteral("saveproject")));
    EXPECT_FALSE(manager->isModified());

    ASSERT_TRUE(run(QStringLiteral("newproject")));
    EXPECT_TRUE(scene.live.isEmpty());
    EXPECT_TRUE(manager->getCurrentFile().isEmpty());

    ASSERT_TRUE(run(QStringLiteral("openproject(%1)").arg(file)));
    EXPECT_EQ(QStringLiteral("changed"), scene.live);
    EXPECT_EQ(file, manager->getCurrentFile());
}

TEST_F(ProjectCommandsTest, FailuresAreReportedOnceAndStopTheRun)
{
    qel::test::LogCapture log;
    EXPECT_FALSE(run(QStringLiteral("saveproject")));
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.last().contains(QStringLiteral("has no file yet"))) << qPrintable(messages.last());

    const QString missing = folder.filePath(QStringLiteral("missing.qelproj"));
    scene.live = QStringLiteral("live");
    EXPECT_FALSE(run(QStringLiteral("openproject(%1)").arg(missing)));
    ASSERT_EQ(2, messages.size());
    EXPECT_TRUE(messages.last().contains(missing));
    EXPECT_TRUE(messages.last().contains(QStringLiteral("does not exist")));
    EXPECT_EQ(1, log.count(QStringLiteral("does not exist"), 1000));
    EXPECT_EQ(QStringLiteral("live"), scene.live);

    EXPECT_FALSE(run(QStringLiteral("openproject")));
    EXPECT_FALSE(run(QStringLiteral("saveproject(a,b)")));
}

TEST_F(ProjectCommandsTest, AreRecordedInMacrosAndReportProgress)
{
    const QString macro = folder.filePath(QStringLiteral("m.qel"));
    const QString file = folder.filePath(QStringLiteral("b.qelproj"));
    std::vector<int> percents;
    Command::setProgressSink([&percents](Command*, int percent, const QString&) { percents.push_back(percent); });
    ASSERT_TRUE(run(QStringLiteral("recordmacro(%1)").arg(macro)));
    ASSERT_TRUE(run(QStringLiteral("saveproject(%1)").arg(file)));
    ASSERT_TRUE(run(QStringLiteral("openproject(%1)").arg(file)));
    ASSERT_TRUE(run(QStringLiteral("newproject")));
    ASSERT_TRUE(run(QStringLiteral("stopmacro")));
    Command::setProgressSink(Command::ProgressSink());

    QFile recorded(macro);
    ASSERT_TRUE(recorded.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString text = QString::fromUtf8(recorded.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("saveproject(%1)").arg(file)));
    EXPECT_TRUE(text.contains(QStringLiteral("openproject(%1)").arg(file)));
    EXPECT_TRUE(text.contains(QStringLiteral("newproject")));
    ASSERT_FALSE(percents.empty());
    EXPECT_EQ(100, percents.back());
}

} // namespace
