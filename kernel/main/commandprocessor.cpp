#include "kernel/main/commandprocessor.h"

#include "kernel/log/logger.h"
#include "kernel/util/exception.h"
#include "kernel/util/parameterstringanalyzer.h"

#include <QColor>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <QMutexLocker>
#include <QStringList>
#include <QTextStream>
#include <QThread>
#include <algorithm>
#include <boost/function/function_base.hpp>
#include <exception>

namespace qel {
namespace main {

namespace {

const char* const LogFile = "kernel/main/commandprocessor";

bool onApplicationThread()
{
    const QCoreApplication* application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

// What a parameter wants, for messages such as "... is not a number".
QString expectation(const AbstractParameter* parameter)
{
    const std::type_info& type = parameter->getTypeInfo();
    if (type == typeid(double) || type == typeid(float))
        return QStringLiteral("a number");
    if (type == typeid(int))
        return QStringLiteral("a whole number");
    if (type == typeid(unsigned int))
        return QStringLiteral("a non-negative whole number");
    if (type == typeid(bool))
        return QStringLiteral("0 or 1");
    if (type == typeid(QColor))
        return QStringLiteral("a colour");
    if (type == typeid(std::vector<double>) || type == typeid(std::vector<float>))
        return QStringLiteral("a list of numbers [a,b,...]");
    if (type == typeid(std::vector<int>))
        return QStringLiteral("a list of whole numbers [a,b,...]");
    if (type == typeid(std::vector<unsigned int>))
        return QStringLiteral("a list of non-negative whole numbers [a,b,...]");
    if (type == typeid(std::vector<QString>))
        return QStringLiteral("a list [a,b,...]");
    return QStringLiteral("of the expected type");
}

// "no arguments", "1 argument", "5 or 6 arguments", "1, 2 or 4 arguments"
QString describeCounts(std::vector<size_t> counts)
{
    std::sort(counts.begin(), counts.end());
    counts.erase(std::unique(counts.begin(), counts.end()), counts.end());
    if (counts.size() == 1 && counts.front() == 0)
        return QStringLiteral("no arguments");
    if (counts.size() == 1 && counts.front() == 1)
        return QStringLiteral("1 argument");
    QStringList numbers;
    for (size_t count : counts)
        numbers << QString::number(count);
    const QString last = numbers.takeLast();
    const QString joined = numbers.isEmpty() ? last : numbers.join(QStringLiteral(", ")) + QStringLiteral(" or ") + last;
    return joined + QStringLiteral(" arguments");
}

} // namespace

CommandProcessor::CommandProcessor() = default;

CommandProcessor::~CommandProcessor()
{
    waitForAll();
    QMutexLocker locker(&mutex);
    for (auto& entry : prototypes)
        delete entry.second;
    prototypes.clear();
}

bool CommandProcessor::registerCommand(Command* prototype)
{
    if (!prototype || prototype->getName().isEmpty()) {
        qel::log::Logger::log(0, LogFile, __LINE__, "qel::main::CommandProcessor::registerCommand", nullptr,
                              "A command without a name can't be registered");
        return false;
    }
    const QString key = prototype->getName().toLower();
    QMutexLocker locker(&mutex);
    if (prototypes.count(key)) {
        qel::log::Logger::log(0, LogFile, __LINE__, "qel::main::CommandProcessor::registerCommand", nullptr,
                              QStringLiteral("A command named '%1' is registered already").arg(key));
        return false;
    }
    prototypes[key] = prototype;
    return true;
}

bool CommandProcessor::unregisterCommand(const QString& name)
{
    Command* prototype = nullptr;
    {
        QMutexLocker locker(&mutex);
        auto found = prototypes.find(name.toLower());
        if (found == prototypes.end())
            return false;
        prototype = found->second;
        prototypes.erase(found);
    }
    delete prototype;
    return true;
}

Command* CommandProcessor::getCommand(const QString& name) const
{
    QMutexLocker locker(&mutex);
    auto found = prototypes.find(name.toLower());
    return found == prototypes.end() ? nullptr : found->second;
}

std::vector<Command*> CommandProcessor::getCommands() const
{
    QMutexLocker locker(&mutex);
    std::vector<Command*> commands;
    for (const auto& entry : prototypes)
        commands.push_back(entry.second);
    return commands;
}

// Disabling a command greys its menu and toolbar entries; a typed or scripted string still
// runs, and execute deals with what is missing.
bool CommandProcessor::executeCommand(const QString& commandString, Command::CommandExecution mode, bool record)
{
    QString error;
    Command* command = prepareCommand(commandString, &error);
    if (!command) {
        reportMessage(error);
        return false;
    }
    if (refuseNonFiniteArgument(command))
        return false;
    if (record && command->isRecordable())
        macroRecorder.add(commandString.trimmed());
    return processCommand(command, mode, false);
}

// A filled clone ready to run, or null with a message for the user.
Command* CommandProcessor::prepareCommand(const QString& commandString, QString* error) const
{
    QString name;
    std::vector<QString> arguments;
    if (!qel::util::ParameterStringAnalyzer::splitCommand(commandString, name, arguments, error))
        return nullptr;
    const Command* prototype = getCommand(name);
    if (!prototype) {
        *error = QStringLiteral("Unknown command '%1'").arg(name);
        return nullptr;
    }
    const bool withoutSets = prototype->getParameterSets()->empty() && arguments.empty();
    if (!withoutSets && !prototype->findParameterSet(arguments)) {
        *error = describeMismatch(prototype, arguments);
        return nullptr;
    }
    Command* command = prototype->clone();
    if (!command) {
        *error = QStringLiteral("Command '%1' can't be run: it can't be copied").arg(prototype->getName());
        return nullptr;
    }
    if (!command->setParameters(arguments)) {
        *error = QStringLiteral("The arguments of '%1' couldn't be read").arg(prototype->getName());
        delete command;
        return nullptr;
    }
    return command;
}

QString CommandProcessor::describeMismatch(const Command* prototype, const std::vector<QString>& arguments) const
{
    const QString name = prototype->getName();
    std::vector<size_t> counts;
    const ParameterSet* closest = nullptr;
    for (const ParameterSet* set : *prototype->getParameterSets()) {
        counts.push_back(set->size());
        if (set->size() == arguments.size()
            && (!closest || set->castableArgumentCount(arguments) > closest->castableArgumentCount(arguments)))
            closest = set;
    }
    if (counts.empty())
        counts.push_back(0);
    if (!closest)
        return QStringLiteral("Command '%1' takes %2, got %3").arg(name, describeCounts(counts)).arg(arguments.size());
    const size_t index = closest->castableArgumentCount(arguments);
    return QStringLiteral("Argument %1 of '%2' ('%3') is not %4")
        .arg(index + 1)
        .arg(name, arguments[index], expectation(closest->getParameter(index)));
}

bool CommandProcessor::processCommand(Command* command, Command::CommandExecution mode, bool record)
{
    if (!command) {
        qel::log::Logger::log(0, LogFile, __LINE__, "qel::main::CommandProcessor::processCommand", nullptr,
                              "Null command not processed");
        return false;
    }
    if (refuseNonFiniteArgument(command))
        return false;
    if (record && command->isRecordable())
        macroRecorder.add(command->toCommandString());
    switch (mode) {
    case Command::EXECUTE_APPLICATIONTHREAD:
        return runOnApplicationThread(command);
    case Command::EXECUTE_BACKGROUND:
        return startInBackground(command);
    case Command::EXECUTE_SYNCHRONOUS:
        break;
    }
    return runGuarded(command);
}

// Text arguments can't be infinite or NaN (the casts refuse them), but a prepared command
// may carry any value: none of that reaches execute. Deletes a refused command.
bool CommandProcessor::refuseNonFiniteArgument(Command* command)
{
    const int index = command->findNonFiniteArgument();
    if (index < 0)
        return false;
    reportMessage(QStringLiteral("Command '%1' refused: argument %2 is not a finite number")
                      .arg(command->getName())
                      .arg(index + 1));
    delete command;
    return true;
}

// Runs and deletes the command; nothing thrown by execute gets past here.
bool CommandProcessor::runGuarded(Command* command)
{
    const QString name = command->getName();
    QString failure;
    try {
        command->execute();
    } catch (const qel::Exception& e) {
        failure = QStringLiteral("%1 (%2:%3)").arg(e.getMessage(), e.getFile()).arg(e.getLine());
    } catch (const boost::bad_function_call& e) {
        failure = QStringLiteral("call of an empty function (%1)").arg(QString::fromUtf8(e.what()));
    } catch (const std::exception& e) {
        failure = QString::fromUtf8(e.what());
    } catch (...) {
        failure = QStringLiteral("unknown exception");
    }
    delete command;
    if (failure.isNull())
        return true;
    reportMessage(QStringLiteral("Command '%1' failed: %2").arg(name, failure));
    return false;
}

// A caller on another thread waits; the application thread must be free to run it.
bool CommandProcessor::runOnApplicationThread(Command* command)
{
    if (onApplicationThread())
        return runGuarded(command);
    bool succeeded = false;
    const bool delivered = QMetaObject::invokeMethod(
        QCoreApplication::instance(), [this, command, &succeeded] { succeeded = runGuarded(command); },
        Qt::BlockingQueuedConnection);
    if (!delivered) {
        reportMessage(QStringLiteral("Command '%1' couldn't be handed to the application thread").arg(command->getName()));
        delete command;
    }
    return delivered && succeeded;
}

bool CommandProcessor::startInBackground(Command* command)
{
    reapFinishedThreads();
    QThread* thread = QThread::create([this, command] { runGuarded(command); });
    {
        QMutexLocker locker(&threadMutex);
        threads.push_back(thread);
    }
    thread->start();
    return true;
}

void CommandProcessor::reapFinishedThreads()
{
    std::vector<QThread*> finished;
    {
        QMutexLocker locker(&threadMutex);
        auto firstFinished = std::stable_partition(threads.begin(), threads.end(),
                                                   [](QThread* thread) { return !thread->isFinished(); });
        finished.assign(firstFinished, threads.end());
        threads.erase(firstFinished, threads.end());
    }
    for (QThread* thread : finished) {
        thread->wait();
        delete thread;
    }
}

// On the application thread the events keep flowing while waiting, so that background
// commands that hand work to that thread can finish.
void CommandProcessor::waitForAll()
{
    for (;;) {
        std::vector<QThread*> running;
        {
            QMutexLocker locker(&threadMutex);
            running.swap(threads);
        }
        if (running.empty())
            return;
        for (QThread* thread : running) {
            if (onApplicationThread() && QCoreApplication::instance()) {
                QEventLoop loop;
                QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
                if (!thread->isFinished())
                    loop.exec();
            }
            thread->wait();
            delete thread;
        }
    }
}

bool CommandProcessor::isRecording() const
{
    return macroRecorder.isRecording();
}

bool CommandProcessor::runMacro(const QString& file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly | QIODevice::Text)) {
        reportMessage(QStringLiteral("Can't read the macro file '%1'").arg(file));
        return false;
    }
    QTextStream stream(&input);
    stream.setCodec("UTF-8");
    const QStringList lines = stream.readAll().split(QLatin1Char('\n'));
    input.close();

    // A macro that runs itself, directly or through others, would never end.
    const QString key = QFileInfo(file).absoluteFilePath();
    {
        QMutexLocker locker(&macroMutex);
        if (!runningMacros.insert(key).second) {
            reportMessage(QStringLiteral("Macro '%1' is running already; it can't run itself").arg(file));
            return false;
        }
    }
    const bool completed = executeMacroLines(file, lines);
    QMutexLocker locker(&macroMutex);
    runningMacros.erase(key);
    return completed;
}

bool CommandProcessor::executeMacroLines(const QString& file, const QStringList& lines)
{
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        QString error;
        Command* command = prepareCommand(line, &error);
        if (!command) {
            reportMessage(QStringLiteral("Macro '%1' stopped at line %2: %3").arg(file).arg(i + 1).arg(error));
            return false;
        }
        if (!processCommand(command, Command::EXECUTE_APPLICATIONTHREAD, false)) {
            reportMessage(QStringLiteral("Macro '%1' stopped at line %2").arg(file).arg(i + 1));
            return false;
        }
    }
    return true;
}

void CommandProcessor::setMessageSink(const MessageSink& sink)
{
    QMutexLocker locker(&mutex);
    messageSink = sink;
}

void CommandProcessor::reportMessage(const QString& message, unsigned int level) const
{
    qel::log::Logger::log(level, LogFile, __LINE__, "qel::main::CommandProcessor::reportMessage", nullptr, message);
    MessageSink sink;
    {
        QMutexLocker locker(&mutex);
        sink = messageSink;
    }
    if (sink)
        sink(message);
}

} // namespace main
} // namespace qel
