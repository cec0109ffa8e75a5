#include "kernel/log/logger.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/overseer.h"
#include "kernel/util/md5.h"
#include "kernel/util/meminfo.h"
#include "support/logcapture.h"
#include "support/otherthread.h"

#include <QCoreApplication>
#include <QDir>
#include <QDockWidget>
#include <QEventLoop>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QSettings>
#include <QThread>
#include <gtest/gtest.h>

using qel::main::Command;
using qel::main::Overseer;

using qel::test::runOnOtherThread;

namespace {

int hostProbeRuns = 0;

class HostProbe : public Command
{
public:
    HostProbe() : Command(new qel::main::CommandDescriptor("hostservicesprobe", "counts its runs"))
    {
        enableCloning<HostProbe>();
    }
    HostProbe(const HostProbe&) = default;
    void execute() override { ++hostProbeRuns; }
};

} // namespace

TEST(MD5, GivesTheLowerCaseDigestOfTheText)
{
    EXPECT_EQ(QString("d41d8cd98f00b204e9800998ecf8427e"), qel::util::MD5::calc(""));
    EXPECT_EQ(QString("900150983cd24fb0d6963f7d28e17f72"), qel::util::MD5::calc("abc"));
    EXPECT_EQ(QString("9e107d9d372bb6826bd81d3542a419d6"),
              qel::util::MD5::calc("The quick brown fox jumps over the lazy dog"));
}

TEST(MemInfo, ReadsTheAvailableMemoryInBytes)
{
    EXPECT_EQ(2048UL * 1024UL, qel::util::MemInfo::parseAvailableMemory("MemTotal:  9999 kB\nMemFree:  100 kB\n"
                                                                        "MemAvailable:    2048 kB\nCached: 7 kB\n"));
    // Without the kernel's estimate: free, buffers and cache together.
    EXPECT_EQ(111UL * 1024UL,
              qel::util::MemInfo::parseAvailableMemory("MemFree: 100 kB\nBuffers: 4 kB\nCached: 7 kB\n"));
    EXPECT_EQ(0UL, qel::util::MemInfo::parseAvailableMemory("garbage"));
    EXPECT_GT(qel::util::MemInfo::getAvailableMemory(), 0UL);
}

TEST(Overseer, MainWindowHasWorkspaceDocksAndOutput)
{
    Overseer* overseer = Overseer::getInstance();
    ASSERT_NE(nullptr, overseer);
    EXPECT_EQ(overseer, Overseer::getInstance());
    EXPECT_EQ(QCoreApplication::instance()->thread(), overseer->getApplicationThread());

    QMainWindow* window = overseer->getMainWindow();
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(window, overseer->getMainWindow());
    EXPECT_EQ(overseer->getWorkspace(), window->centralWidget());
    auto* output = window->findChild<QDockWidget*>("Output");
    ASSERT_NE(nullptr, output);
    EXPECT_EQ(overseer->getOutputConsole(), output->widget());

    auto* content = new QWidget();
    QMdiSubWindow* sub = overseer->getWorkspaceWindow("Scene Window", content);
    ASSERT_NE(nullptr, sub);
    EXPECT_EQ(content, sub->widget());
    EXPECT_EQ(QString("Scene Window"), sub->windowTitle());
    EXPECT_TRUE(overseer->getWorkspace()->subWindowList().contains(sub));
    delete sub;

    QDockWidget* bottom = overseer->registerDockWidget("Setup Lines", 8);
    EXPECT_EQ(Qt::BottomDockWidgetArea, window->dockWidgetArea(bottom));
    QDockWidget* left = overseer->registerDockWidget("ClippingPlaneGUI", Qt::LeftDockWidgetArea);
    EXPECT_EQ(Qt::LeftDockWidgetArea, window->dockWidgetArea(left));
    qel::test::LogCapture log;
    QDockWidget* fallback = overseer->registerDockWidget("Nowhere", 3);
    EXPECT_EQ(Qt::LeftDockWidgetArea, window->dockWidgetArea(fallback));
    EXPECT_EQ(1, log.count("No dock area 3", 0));

    // From another thread the docks are still made on the application thread.
    QDockWidget* fromThread = nullptr;
    runOnOtherThread([&]() { fromThread = overseer->registerDockWidget("Simple Controls", 2); });
    ASSERT_NE(nullptr, fromThread);
    EXPECT_EQ(QCoreApplication::instance()->thread(), fromThread->thread());
    EXPECT_EQ(Qt::RightDockWidgetArea, window->dockWidgetArea(fromThread));
    delete bottom;
    delete left;
    delete fallback;
    delete fromThread;
}

TEST(Overseer, ConsoleTakesLinesFromAnyThreadAndWarningsFromTheLog)
{
    Overseer::OutputConsole* console = Overseer::getInstance()->getOutputConsole();
    console->clearText();
    console->appendText("first line");
    runOnOtherThread([console]() { console->appendText("from a thread"); });
    EXPECT_EQ(QString("first line\nfrom a thread"), console->getText());
    QCoreApplication::processEvents();
    EXPECT_EQ(QString("first line\nfrom a thread"), console->toPlainText());

    console->clearText();
    qel::log::Logger::log(2000, "tests/kernel/test_hostservices", 1, "test", nullptr, "a warning for the user");
    qel::log::Logger::log(3000, "tests/kernel/test_hostservices", 2, "test", nullptr, "only information");
    EXPECT_TRUE(console->getText().contains("a warning for the user"));
    EXPECT_FALSE(console->getText().contains("only information"));
}

TEST(Overseer, CommandsRunThroughTheProcessorAndFaultsReachTheConsoleOnce)
{
    Overseer* overseer = Overseer::getInstance();
    if (!overseer->getCommandProcessor()->getCommand("hostservicesprobe"))
        overseer->getCommandProcessor()->registerCommand(new HostProbe());
    hostProbeRuns = 0;
    EXPECT_TRUE(overseer->executeNativeCommand("hostservicesprobe()"));
    EXPECT_EQ(1, hostProbeRuns);
    EXPECT_TRUE(overseer->executeCommand("hostservicesprobe", Command::EXECUTE_SYNCHRONOUS, false));
    EXPECT_EQ(2, hostProbeRuns);

    Overseer::OutputConsole* console = overseer->getOutputConsole();
    console->clearText();
    EXPECT_FALSE(overseer->executeNativeCommand("nosuchhostcommand(1)"));
    const QStringList lines = console->getText().split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(1, lines.size()) << qPrintable(console->getText());
    EXPECT_TRUE(lines.first().contains("nosuchhostcommand"));
}

TEST(Overseer, SettingsAndHome)
{
    Overseer* overseer = Overseer::getInstance();
    QSettings* settings = overseer->getQSettings();
    ASSERT_NE(nullptr, settings);
    EXPECT_EQ(settings, overseer->getQSettings());
    EXPECT_EQ(QCoreApplication::organizationName(), settings->organizationName());
    EXPECT_EQ(QCoreApplication::applicationName(), settings->applicationName());
    settings->setValue("settings/wheelspeed", 150);
    EXPECT_EQ(150, overseer->getQSettings()->value("settings/wheelspeed", 100).toInt());
    settings->remove("settings/wheelspeed");
    EXPECT_EQ(100, overseer->getQSettings()->value("settings/wheelspeed", 100).toInt());
    EXPECT_EQ(QDir::homePath(), Overseer::homeDirPath());
}
