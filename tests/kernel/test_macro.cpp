#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/hostcommands.h"
#include "kernel/main/parameter.h"
#include "support/logcapture.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <QTextStream>
#include <gtest/gtest.h>

using qel::main::Command;
using qel::main::CommandDescriptor;
using qel::main::CommandProcessor;

namespace {

QStringList* played = nullptr;

// Writes its one argument (or its name) to the list of played commands.
class Echo : public Command
{
public:
    explicit Echo(const QString& name, bool withArgument) : Command(new CommandDescriptor(name, "echo"))
    {
        enableCloning<Echo>();
        if (withArgument) {
            auto* set = new qel::main::ParameterSet(0, "text");
            set->addParameter(new qel::main::Parameter<int>("n", "a number"));
            addParameterSet(set);
        }
    }
    Echo(const Echo&) = default;

    void execute() override
    {
        *played << (selectedParameterSet ? getName() + selectedParameterSet->getParameter(0)->toString() : getName());
    }
};

QStringList readLines(const QString& file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly | QIODevice::Text))
        return {"<unreadable>"};
    return QString::fromUtf8(input.readAll()).split('\n', Qt::SkipEmptyParts);
}

void writeLines(const QString& file, const QStringList& lines)
{
    QFile output(file);
    ASSERT_TRUE(output.open(QIODevice::WriteOnly | QIODevice::Text));
    output.write((lines.join('\n') + '\n').toUtf8());
}

class MacroTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        played = &plays;
        processor.setMessageSink([this](const QString& message) { messages << message; });
        qel::main::registerHostCommands(&processor);
        processor.registerCommand(new Echo("step", true));
        processor.registerCommand(new Echo("viewscene", false));
    }
    void TearDown() override { played = nullptr; }

    bool run(const QString& command, bool record = true)
    {
        return processor.executeCommand(command, Command::EXECUTE_SYNCHRONOUS, record);
    }
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    QStringList plays;
    QStringList messages;
    CommandProcessor processor;
};

} // namespace

TEST_F(MacroTest, RecordsCommandStringsAndReplaysThem)
{
    const QString macro = path("my macro.txt");
    ASSERT_TRUE(run(QString("recordmacro(%1)").arg(macro)));
    EXPECT_TRUE(processor.isRecording());
    ASSERT_TRUE(run("step(1)"));
    ASSERT_TRUE(run("step(2)", false));
    ASSERT_TRUE(run("  viewscene  "));
    EXPECT_FALSE(run("step(x)"));
    ASSERT_TRUE(run("stopmacro"));
    EXPECT_FALSE(processor.isRecording());
    EXPECT_EQ((QStringList{"step(1)", "viewscene"}), readLines(macro));

    plays.clear();
    messages.clear();
    ASSERT_TRUE(run(QString("runmacro(%1)").arg(macro)));
    EXPECT_EQ((QStringList{"step1", "viewscene"}), plays);
    EXPECT_TRUE(messages.isEmpty());
}

TEST_F(MacroTest, ReplaySkipsCommentsAndStopsAtTheFirstBadLine)
{
    const QString macro = path("broken.macro");
    writeLines(macro, {"# a comment", "step(1)", "", "   ", "step(2)", "step(two)", "step(3)"});
    qel::test::LogCapture log;
    EXPECT_FALSE(processor.runMacro(macro));
    EXPECT_EQ((QStringList{"step1", "step2"}), plays);
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.front().contains("line 6")) << messages.front().toStdString();
    EXPECT_TRUE(messages.front().contains("Argument 1 of 'step' ('two') is not a whole number"));
    EXPECT_TRUE(log.contains("line 6", 1000));

    messages.clear();
    writeLines(macro, {"step(1)", "nosuch", "step(3)"});
    plays.clear();
    EXPECT_FALSE(processor.runMacro(macro));
    EXPECT_EQ((QStringList{"step1"}), plays);
    EXPECT_TRUE(messages.front().contains("Unknown command 'nosuch'"));
}

TEST_F(MacroTest, MacroCommandsReportWhatWentWrong)
{
    EXPECT_TRUE(run("stopmacro"));
    EXPECT_EQ((QStringList{"No macro is being recorded"}), messages);

    messages.clear();
    EXPECT_TRUE(run(QString("recordmacro(%1)").arg(path("no such folder/x.macro"))));
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.front().startsWith("Can't write the macro file"));
    EXPECT_FALSE(processor.isRecording());

    messages.clear();
    EXPECT_FALSE(processor.runMacro(path("missing.macro")));
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.front().startsWith("Can't read the macro file"));

    messages.clear();
    ASSERT_TRUE(run(QString("recordmacro(%1)").arg(path("a.macro"))));
    EXPECT_TRUE(run(QString("recordmacro(%1)").arg(path("b.macro"))));
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.front().startsWith("A macro is being recorded already"));
    ASSERT_TRUE(run("stopmacro"));
}

TEST_F(MacroTest, MacroThatRunsItselfIsStopped)
{
    const QString macro = path("loop.macro");
    writeLines(macro, {"step(1)", QString("runmacro(%1)").arg(macro)});
    processor.runMacro(macro);
    EXPECT_EQ((QStringList{"step1"}), plays);
    EXPECT_TRUE(messages.join('|').contains("can't run itself")) << messages.join('|').toStdString();
}
