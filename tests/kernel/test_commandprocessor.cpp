#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/parameter.h"
#include "kernel/main/settingscommand.h"
#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"
#include "kernel/util/exception.h"
#include "support/logcapture.h"

#include <QAction>
#include <QCoreApplication>
#include <QEventLoop>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <boost/function.hpp>
#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include <stdexcept>

using qel::main::Command;
using qel::main::CommandDescriptor;
using qel::main::CommandProcessor;
using qel::main::Parameter;
using qel::main::ParameterSet;

namespace {

// What the test commands saw when they ran.
struct ProbeRun
{
    QString command;
    int set;
    QStringList arguments;
    QThread* thread;
};

struct Journal
{
    QMutex mutex;
    std::vector<ProbeRun> runs;
    int deletions = 0;

    void add(const ProbeRun& run)
    {
        QMutexLocker locker(&mutex);
        runs.push_back(run);
    }
    std::vector<ProbeRun> all()
    {
        QMutexLocker locker(&mutex);
        return runs;
    }
};

Journal* journal = nullptr;

ParameterSet* makeSet(int id, std::initializer_list<qel::main::AbstractParameter*> parameters)
{
    auto* set = new ParameterSet(id, QString("set %1").arg(id));
    for (auto* parameter : parameters)
        set->addParameter(parameter);
    return set;
}

// Writes down its selected set and the text of each argument.
class Probe : public Command
{
public:
    explicit Probe(const QString& name) : Command(new CommandDescriptor(name, "a probe")) { enableCloning<Probe>(); }
    Probe(const Probe& other) = default;
    ~Probe() override
    {
        if (journal)
            ++journal->deletions;
    }

    void execute() override
    {
        QStringList arguments;
        if (selectedParameterSet) {
            for (auto* parameter : *selectedParameterSet->getParameterList())
                arguments << parameter->toString();
        }
        journal->add({getName(), selectedID, arguments, QThread::currentThread()});
        if (onRun)
            onRun();
    }

    boost::function<void()> onRun;
};

Probe* selectPoint()
{
    auto* command = new Probe("selectpoint");
    command->addParameterSet(makeSet(1, {new Parameter<double>("x", ""), new Parameter<double>("y", ""),
                                         new Parameter<double>("z", "")}));
    command->addParameterSet(makeSet(2, {new Parameter<QString>("name", ""),
                                         new Parameter<std::vector<double>>("point", ""),
                                         new Parameter<unsigned int>("index", "")}));
    return command;
}

Probe* translate()
{
    auto* command = new Probe("translate");
    command->addParameterSet(makeSet(0, {new Parameter<QString>("name", ""), new Parameter<double>("x", ""),
                                         new Parameter<double>("y", ""), new Parameter<double>("z", ""),
                                         new Parameter<bool>("absolute", "")}));
    command->addParameterSet(makeSet(1, {new Parameter<QString>("name", ""), new Parameter<double>("x", ""),
                                         new Parameter<double>("y", ""), new Parameter<double>("z", ""),
                                         new Parameter<bool>("absolute", ""), new Parameter<int>("mode", "")}));
    return command;
}

// A command with only a free text and a typed form of two arguments.
Probe* rename()
{
    auto* command = new Probe("renamesceneelement");
    command->addParameterSet(makeSet(0, {new Parameter<QString>("old", ""), new Parameter<QString>("new", "")}));
    command->addParameterSet(makeSet(3, {new Parameter<QString>("old", ""), new Parameter<int>("index", "")}));
    return command;
}

class CommandProcessorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        journal = &runs;
        processor.setMessageSink([this](const QString& message) { messages << message; });
        processor.registerCommand(selectPoint());
        processor.registerCommand(translate());
        processor.registerCommand(rename());
        processor.registerCommand(new Probe("viewscene"));
    }
    void TearDown() override
    {
        processor.waitForAll();
        journal = nullptr;
    }

    Probe* prototype(const QString& name) { return static_cast<Probe*>(processor.getCommand(name)); }

    Journal runs;
    QStringList messages;
    CommandProcessor processor;
};

class Thrower : public Command
{
public:
    explicit Thrower(int kind) : Command(new CommandDescriptor("thrower", "throws")), kind(kind)
    {
        enableCloning<Thrower>();
    }
    Thrower(const Thrower&) = default;
    ~Thrower() override { ++*deleted(); }
    static int* deleted()
    {
        static int count = 0;
        return &count;
    }

    void execute() override
    {
        switch (kind) {
        case 0:
            throw qel::Exception("singular matrix", "kernel/math/matrix", 12, "getInverse");
        case 1:
            throw std::runtime_error("out of range");
        case 2: {
            boost::function<void()> empty;
            empty();
            break;
        }
        default:
            throw 42;
        }
    }

private:
    int kind;
};

// Has no way of being copied.
class Uncopyable : public Command
{
public:
    Uncopyable() : Command(new CommandDescriptor("uncopyable", "")) {}
    void execute() override { ADD_FAILURE() << "an uncopyable prototype must never run"; }
};

} // namespace

TEST_F(CommandProcessorTest, PicksTheSetByCountAndCast)
{
    EXPECT_TRUE(processor.executeCommand("selectpoint(1,2,3)", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("selectpoint(a,[1,2,3],4)", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("translate(My model,1,2,3,0)", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("translate(My model,1,2,3,1,7)", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("SelectPoint(1.5,2,3)", Command::EXECUTE_SYNCHRONOUS, true));

    const std::vector<ProbeRun> all = runs.all();
    ASSERT_EQ(5u, all.size());
    EXPECT_EQ(1, all[0].set);
    EXPECT_EQ((QStringList{"1", "2", "3"}), all[0].arguments);
    EXPECT_EQ(2, all[1].set);
    EXPECT_EQ((QStringList{"a", "[1,2,3]", "4"}), all[1].arguments);
    EXPECT_EQ(0, all[2].set);
    EXPECT_EQ("My model", all[2].arguments.front());
    EXPECT_EQ(1, all[3].set);
    EXPECT_EQ(1, all[4].set);
    EXPECT_TRUE(messages.isEmpty());
}

TEST_F(CommandProcessorTest, PrefersTheMoreTypedOfTwoFittingSets)
{
    ASSERT_TRUE(processor.executeCommand("renamesceneelement(a,5)", Command::EXECUTE_SYNCHRONOUS, false));
    ASSERT_TRUE(processor.executeCommand("renamesceneelement(a,b)", Command::EXECUTE_SYNCHRONOUS, false));
    const std::vector<ProbeRun> all = runs.all();
    EXPECT_EQ(3, all[0].set);
    EXPECT_EQ(0, all[1].set);
}

TEST_F(CommandProcessorTest, CommandsWithoutSetsTakeNoArguments)
{
    EXPECT_TRUE(processor.executeCommand("viewscene", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("viewscene()", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ(2u, runs.all().size());
    EXPECT_EQ(-1, runs.all().front().set);

    qel::test::LogCapture log;
    EXPECT_FALSE(processor.executeCommand("viewscene(1)", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ((QStringList{"Command 'viewscene' takes no arguments, got 1"}), messages);
    EXPECT_TRUE(log.contains("takes no arguments", 1000));
    EXPECT_EQ(2u, runs.all().size());
}

TEST_F(CommandProcessorTest, RefusesWithOneClearMessageAndRunsNothing)
{
    const struct
    {
        const char* command;
        const char* message;
    } cases[] = {
        {"foo(1)", "Unknown command 'foo'"},
        {"translate(a,1)", "Command 'translate' takes 5 or 6 arguments, got 2"},
        {"translate(a,1,abc,3,0)", "Argument 3 of 'translate' ('abc') is not a number"},
        {"translate(a,1,2,3,2)", "Argument 5 of 'translate' ('2') is not 0 or 1"},
        {"selectpoint(a,[1,x,3],4)", "Argument 2 of 'selectpoint' ('[1,x,3]') is not a list of numbers"},
        {"selectpoint(a,[1,2,3],-4)", "Argument 3 of 'selectpoint' ('-4') is not a non-negative whole number"},
        {"selectpoint()", "Command 'selectpoint' takes 3 arguments, got 0"},
        {"selectpoint(1,2,3", "Missing ')'"},
        {"selectpoint(1,2,3))", "Unexpected text"},
        {"selectpoint(a,[1,2,3,4)", "Unbalanced ')'"},
        {"selectpoint(a,[1,2,3,4", "Missing ']'"},
        {"selectpoint(a,,3)", "Empty argument 2"},
        {"(1,2,3)", "Missing command name"},
        {"", "Empty command string"},
    };
    for (const auto& c : cases) {
        messages.clear();
        qel::test::LogCapture log;
        EXPECT_FALSE(processor.executeCommand(c.command, Command::EXECUTE_SYNCHRONOUS, true)) << c.command;
        ASSERT_EQ(1, messages.size()) << c.command;
        EXPECT_TRUE(messages.front().startsWith(c.message) || messages.front().contains(c.message))
            << c.command << " gave: " << messages.front().toStdString();
        EXPECT_FALSE(messages.front().contains('\n'));
        EXPECT_EQ(1, log.count(messages.front(), 1000)) << c.command;
    }
    EXPECT_TRUE(runs.all().empty());
    EXPECT_EQ(0, runs.deletions);
}

TEST_F(CommandProcessorTest, EachRunWorksOnItsOwnClone)
{
    Probe* original = prototype("selectpoint");
    ASSERT_TRUE(processor.executeCommand("selectpoint(a,[1,2,3],4)", Command::EXECUTE_SYNCHRONOUS, false));
    EXPECT_EQ(1, runs.deletions);
    for (ParameterSet* set : *original->getParameterSets()) {
        for (auto* parameter : *set->getParameterList())
            EXPECT_FALSE(parameter->hasValue()) << parameter->getParameterName().toStdString();
    }
    EXPECT_EQ(nullptr, original->getSelectedParameterSet());
    EXPECT_EQ(-1, original->getSelectedID());
}

// Disabling greys the GUI entries; the string of a disabled command still runs, typed,
// scripted or from a macro, and its execute deals with what is missing.
TEST_F(CommandProcessorTest, DisabledCommandStillRunsFromItsString)
{
    prototype("viewscene")->disableCommand(true);
    prototype("translate")->disableCommand(true);
    EXPECT_TRUE(processor.executeCommand("viewscene", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_TRUE(processor.executeCommand("translate(a,1,2,3,1)", Command::EXECUTE_APPLICATIONTHREAD, false));

    const QString macro = QDir::temp().filePath("qel_disabled_macro.txt");
    QFile file(macro);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Text));
    file.write("viewscene\n");
    file.close();
    EXPECT_TRUE(processor.runMacro(macro));
    QFile::remove(macro);

    EXPECT_TRUE(messages.isEmpty()) << messages.join("\n").toStdString();
    const std::vector<ProbeRun> all = runs.all();
    ASSERT_EQ(3u, all.size());
    EXPECT_EQ("viewscene", all[0].command);
    EXPECT_EQ((QStringList{"a", "1", "2", "3", "1"}), all[1].arguments);
    EXPECT_EQ("viewscene", all[2].command);
    EXPECT_TRUE(prototype("viewscene")->isDisabled());
    prototype("viewscene")->disableCommand(false);
    prototype("translate")->disableCommand(false);
}

// A prepared command can carry values that no text would give: an infinity or NaN never
// reaches execute, whichever way the command comes in.
TEST_F(CommandProcessorTest, NonFiniteArgumentsAreRefusedBeforeExecute)
{
    const double notFinite[] = {std::numeric_limits<double>::infinity(), std::nan("")};
    for (double value : notFinite) {
        messages.clear();
        Command* command = prototype("selectpoint")->clone();
        ASSERT_TRUE(command->setParameters({"1", "2", "3"}));
        *static_cast<double*>(command->getSelectedParameterSet()->getParameter(1)->getValuePointer()) = value;
        qel::test::LogCapture log;
        EXPECT_FALSE(processor.processCommand(command, Command::EXECUTE_SYNCHRONOUS, false));
        EXPECT_EQ((QStringList{"Command 'selectpoint' refused: argument 2 is not a finite number"}), messages);
        EXPECT_EQ(1, log.count("argument 2 is not a finite number", 1000));
    }

    // Nor does it go into a recorded macro.
    messages.clear();
    const QString macro = QDir::temp().filePath("qel_nonfinite_macro.txt");
    ASSERT_TRUE(processor.getMacroRecorder()->start(macro));
    Command* list = prototype("selectpoint")->clone();
    ASSERT_TRUE(list->setParameters({"a", "[1,2,3]", "4"}));
    (*static_cast<std::vector<double>*>(list->getSelectedParameterSet()->getParameter(1)->getValuePointer()))[2] =
        std::numeric_limits<double>::infinity();
    EXPECT_FALSE(processor.processCommand(list, Command::EXECUTE_APPLICATIONTHREAD, true));
    EXPECT_EQ((QStringList{"Command 'selectpoint' refused: argument 2 is not a finite number"}), messages);
    EXPECT_TRUE(processor.getMacroRecorder()->getCommands().isEmpty());
    processor.getMacroRecorder()->stop();
    QFile::remove(macro);

    // Text never gets that far: the cast refuses it and says which argument.
    messages.clear();
    EXPECT_FALSE(processor.executeCommand("selectpoint(1,inf,3)", Command::EXECUTE_SYNCHRONOUS, false));
    EXPECT_EQ(1, messages.size());
    EXPECT_TRUE(runs.all().empty());
    EXPECT_EQ(3, runs.deletions);
}

TEST_F(CommandProcessorTest, EveryExceptionOutOfExecuteIsCaught)
{
    const char* expected[] = {"singular matrix", "out of range", "empty function", "unknown exception"};
    for (int kind = 0; kind < 4; ++kind) {
        messages.clear();
        const int deletedBefore = *Thrower::deleted();
        qel::test::LogCapture log;
        EXPECT_FALSE(processor.processCommand(new Thrower(kind), Command::EXECUTE_SYNCHRONOUS, false));
        EXPECT_EQ(deletedBefore + 1, *Thrower::deleted());
        ASSERT_EQ(1, messages.size());
        EXPECT_TRUE(messages.front().startsWith("Command 'thrower' failed: ")) << messages.front().toStdString();
        EXPECT_TRUE(messages.front().contains(expected[kind])) << messages.front().toStdString();
        EXPECT_TRUE(log.contains("Command 'thrower' failed", 1000));
    }
}

TEST_F(CommandProcessorTest, ProcessCommandRunsDoneCommandsAndRecordsTheirText)
{
    ASSERT_TRUE(processor.getMacroRecorder()->start(QDir::temp().filePath("qel-process-record.macro")));
    Command* command = prototype("selectpoint")->clone();
    ASSERT_TRUE(command->setParameters({"1", "2", "3"}));
    command->setDone(true);
    EXPECT_TRUE(processor.processCommand(command, Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ(1u, runs.all().size());
    EXPECT_EQ(1, runs.deletions);
    EXPECT_EQ((QStringList{"selectpoint(1,2,3)"}), processor.getMacroRecorder()->getCommands());
    processor.getMacroRecorder()->stop();
    QFile::remove(QDir::temp().filePath("qel-process-record.macro"));
}

TEST_F(CommandProcessorTest, ApplicationThreadModeHopsOverAndBackgroundRunsApart)
{
    QThread* application = QCoreApplication::instance()->thread();
    prototype("viewscene")->onRun = [this] {
        if (runs.all().size() == 1)
            processor.executeCommand("selectpoint(1,2,3)", Command::EXECUTE_APPLICATIONTHREAD, false);
    };
    ASSERT_TRUE(processor.executeCommand("viewscene", Command::EXECUTE_BACKGROUND, false));
    processor.waitForAll();

    const std::vector<ProbeRun> all = runs.all();
    ASSERT_EQ(2u, all.size());
    EXPECT_EQ("viewscene", all[0].command);
    EXPECT_NE(application, all[0].thread);
    EXPECT_EQ("selectpoint", all[1].command);
    EXPECT_EQ(application, all[1].thread);
    EXPECT_EQ(2, runs.deletions);

    ASSERT_TRUE(processor.executeCommand("selectpoint(1,2,3)", Command::EXECUTE_APPLICATIONTHREAD, false));
    EXPECT_EQ(application, runs.all().back().thread);
}

TEST_F(CommandProcessorTest, RegistrationRefusesDuplicatesAndSortsByName)
{
    qel::test::LogCapture log;
    Probe duplicate("SelectPoint");
    EXPECT_FALSE(processor.registerCommand(&duplicate));
    EXPECT_TRUE(log.contains("registered already", 0));

    const std::vector<Command*> commands = processor.getCommands();
    QStringList names;
    for (Command* command : commands)
        names << command->getName();
    EXPECT_EQ((QStringList{"renamesceneelement", "selectpoint", "translate", "viewscene"}), names);

    EXPECT_TRUE(processor.unregisterCommand("viewscene"));
    EXPECT_EQ(nullptr, processor.getCommand("viewscene"));
    EXPECT_FALSE(processor.unregisterCommand("viewscene"));
}

TEST_F(CommandProcessorTest, CommandThatCantBeCopiedIsReportedNotRun)
{
    ASSERT_TRUE(processor.registerCommand(new Uncopyable()));
    qel::test::LogCapture log;
    EXPECT_FALSE(processor.executeCommand("uncopyable", Command::EXECUTE_SYNCHRONOUS, false));
    EXPECT_TRUE(log.contains("can't be copied", 0));
    ASSERT_EQ(1, messages.size());
    EXPECT_TRUE(messages.front().contains("can't be copied"));
}

TEST(Command, CopySharesDescriptorsAndDeepCopiesSets)
{
    Probe* original = selectPoint();
    original->addGUIDescriptor(new qel::main::CommandGUIDescriptor(qel::main::CommandGUIDescriptor::MAINMENU, "Scene",
                                                                    11, "Add point", "", nullptr));
    std::unique_ptr<Command> copy(original->clone());
    ASSERT_TRUE(copy);
    EXPECT_EQ(original->getDescriptor(), copy->getDescriptor());
    EXPECT_EQ(original->getGUIDescriptors(), copy->getGUIDescriptors());
    EXPECT_EQ(original, copy->getGUIDescriptors().front()->getCommand());
    ASSERT_EQ(2u, copy->getParameterSets()->size());
    EXPECT_NE(original->getParameterSets()->front(), copy->getParameterSets()->front());

    ASSERT_TRUE(copy->setParameters({"a", "[1,2,3]", "4"}));
    EXPECT_EQ(2, copy->getSelectedID());
    EXPECT_EQ(copy->getParameterSetByID(2), copy->getSelectedParameterSet());
    EXPECT_EQ("selectpoint(a,[1,2,3],4)", copy->toCommandString());

    std::unique_ptr<Command> second(copy->clone());
    EXPECT_EQ(second->getParameterSetByID(2), second->getSelectedParameterSet());
    EXPECT_EQ("selectpoint(a,[1,2,3],4)", second->toCommandString());

    original->disableCommand(true);
    EXPECT_FALSE(original->getGUIDescriptors().front()->isQActionEnabled());
    copy.reset();
    second.reset();
    EXPECT_EQ(1u, original->getGUIDescriptors().size());
    delete original;
}

TEST(CommandGUIDescriptor, ActionIsMadeOnceOnTheApplicationThreadWithTheStoredState)
{
    qel::main::CommandGUIDescriptor entry(qel::main::CommandGUIDescriptor::TOOLBAR, "Scene", 10, "View x-y-plane",
                                         "Looks along z", nullptr);
    entry.setShortcut(QKeySequence("F"));
    entry.enableQAction(false);

    QAction* fromWorker = nullptr;
    QThread* worker = QThread::create([&entry, &fromWorker] { fromWorker = entry.getQAction(); });
    QEventLoop loop;
    QObject::connect(worker, &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    worker->start();
    loop.exec();
    worker->wait();
    delete worker;

    ASSERT_NE(nullptr, fromWorker);
    EXPECT_EQ(fromWorker, entry.getQAction());
    EXPECT_EQ(QCoreApplication::instance()->thread(), fromWorker->thread());
    EXPECT_EQ("View x-y-plane", fromWorker->text());
    EXPECT_EQ("Looks along z", fromWorker->toolTip());
    EXPECT_EQ(QKeySequence("F"), fromWorker->shortcut());
    EXPECT_FALSE(fromWorker->isEnabled());
    entry.enableQAction(true);
    EXPECT_TRUE(fromWorker->isEnabled());
}

TEST(SettingsCommand, AnnouncesChangesOnlyWhenAllowed)
{
    struct Setting : qel::main::SettingsCommand
    {
        Setting() : SettingsCommand(new CommandDescriptor("setsomething", "")) { enableCloning<Setting>(); }
        void execute() override { settingsChanged(); }
    };
    int announced = 0;
    const unsigned long id = qel::events::EventHandler::getInstance()->addEvent("Global", "SETTINGS_CHANGED");
    qel::main::EventManager::getInstance()->registerEventFunction(
        id, new qel::main::EventManager::EventFunction([&announced](const qel::main::Event*) { ++announced; }),
        &announced);
    Setting setting;
    setting.execute();
    setting.setSettingsChangedEventEnabled(false);
    std::unique_ptr<Command> copy(setting.clone());
    copy->execute();
    qel::main::EventManager::getInstance()->unregisterAllEventFunctionsOf(&announced);
    EXPECT_EQ(1, announced);
}
