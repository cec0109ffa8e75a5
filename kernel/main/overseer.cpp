#include "kernel/main/overseer.h"

#include "kernel/log/logger.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/hostcommands.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/modulemanager.h"
#include "kernel/util/worker.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMetaObject>
#include <QMutexLocker>
#include <QSettings>
#include <QThread>

namespace qel {
namespace main {

namespace {

std::atomic<Overseer*> instance{nullptr};

const int MaximumPendingLines = 1000;
const int RememberedMessages = 32;

bool onApplicationThread()
{
    QCoreApplication* application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

// Takes the text out of `other` if it is there (the console has it already); else notes it in `own`.
bool alreadyShown(const QString& text, QStringList& own, QStringList& other)
{
    if (other.removeOne(text))
        return true;
    own.append(text);
    while (own.size() > RememberedMessages)
        own.removeFirst();
    return false;
}

} // namespace

Overseer* Overseer::getInstance()
{
    if (Overseer* existing = instance.load())
        return existing;
    if (!QCoreApplication::instance()) {
        qel::log::Logger::log(0, "kernel/main/overseer", 53, "qel::main::Overseer::getInstance", nullptr,
                              "The host services need a QApplication");
        return nullptr;
    }
    // Made on the application thread only, so no two threads can make it.
    runOnApplicationThread([]() { createInstance(); });
    return instance.load();
}

Overseer* Overseer::createInstance()
{
    if (!instance.load())
        instance.store(new Overseer());
    return instance.load();
}

void Overseer::destroyInstance()
{
    runOnApplicationThread([]() {
        Overseer* existing = instance.load();
        if (!existing)
            return;
        existing->processor->waitForAll();
        existing->deleteMainWindow();
        ModuleManager::getInstance()->unloadModules();
        instance.store(nullptr);
        delete existing;
    });
}

Overseer::Overseer()
    : processor(new CommandProcessor()),
      mainWindow(nullptr),
      settings(nullptr),
      workspace(nullptr),
      console(nullptr),
      menuManager(nullptr),
      logListener(0)
{
    registerHostCommands(processor);
    processor->setMessageSink([this](const QString& message) { forwardSinkMessage(message); });
    logListener = qel::log::Logger::addListener([this](const qel::log::LogRecord& record) { forwardLogRecord(record); });
}

Overseer::~Overseer()
{
    qel::log::Logger::removeListener(logListener);
    processor->setMessageSink(CommandProcessor::MessageSink());
    deleteMainWindow();
    delete processor;
    if (QSettings* existing = settings.load()) {
        existing->sync();
        delete existing;
    }
}

void Overseer::runOnApplicationThread(const boost::function<void()>& work)
{
    if (onApplicationThread())
        work();
    else
        QMetaObject::invokeMethod(QCoreApplication::instance(), [&work]() { work(); }, Qt::BlockingQueuedConnection);
}

QThread* Overseer::getApplicationThread() const
{
    QCoreApplication* application = QCoreApplication::instance();
    return application ? application->thread() : nullptr;
}

void Overseer::transmitWorker(qel::util::Worker* worker)
{
    if (!worker)
        return;
    if (onApplicationThread()) {
        worker->runNow();
        return;
    }
    const boost::function<void()> invocation = worker->createInvocation();
    QMetaObject::invokeMethod(QCoreApplication::instance(), [invocation]() { invocation(); }, Qt::QueuedConnection);
}

QMainWindow* Overseer::getMainWindow()
{
    if (!mainWindow.load())
        runOnApplicationThread([this]() { createMainWindow(); });
    return mainWindow.load();
}

void Overseer::createMainWindow()
{
    if (mainWindow.load())
        return;
    auto* window = new QMainWindow();
    window->setWindowTitle(QCoreApplication::applicationName());
    workspace = new QMdiArea(window);
    window->setCentralWidget(workspace);

    auto* outputDock = new QDockWidget(tr("Output"), window);
    outputDock->setObjectName(QStringLiteral("Output"));
    auto* outputConsole = new OutputConsole(outputDock);
    outputDock->setWidget(outputConsole);
    window->addDockWidget(Qt::BottomDockWidgetArea, outputDock);

    menuManager = new MenuAndToolbarManager(window, processor, ModuleManager::getInstance());
    // The host's own menus stand before those of the modules.
    menuManager->setHostPosition(CommandGUIDescriptor::MAINMENU, QObject::tr("File"), 0);
    menuManager->setHostPosition(CommandGUIDescriptor::MAINMENU, QObject::tr("Edit"), 10);
    menuManager->update();
    {
        QMutexLocker locker(&consoleMutex);
        console = outputConsole;
        for (const QString& line : pendingLines)
            console->appendText(line);
        pendingLines.clear();
    }
    mainWindow.store(window);
}

bool Overseer::hasMainWindow() const
{
    return mainWindow.load() != nullptr;
}

void Overseer::deleteMainWindow()
{
    {
        QMutexLocker locker(&consoleMutex);
        console = nullptr;
    }
    delete menuManager;
    menuManager = nullptr;
    delete mainWindow.exchange(nullptr);
    workspace = nullptr;
}

QMdiArea* Overseer::getWorkspace()
{
    getMainWindow();
    return workspace;
}

Overseer::OutputConsole* Overseer::getOutputConsole()
{
    getMainWindow();
    return console;
}

MenuAndToolbarManager* Overseer::getMenuAndToolbarManager()
{
    getMainWindow();
    return menuManager;
}

ModuleManager* Overseer::getModuleManager() const
{
    return ModuleManager::getInstance();
}

QDockWidget* Overseer::registerDockWidget(const QString& name, Qt::DockWidgetArea area)
{
    QMainWindow* window = getMainWindow();
    QDockWidget* dock = nullptr;
    runOnApplicationThread([&]() {
        dock = new QDockWidget(name, window);
        dock->setObjectName(name);
        window->addDockWidget(area, dock);
    });
    return dock;
}

QDockWidget* Overseer::registerDockWidget(const QString& name, int area)
{
    switch (area) {
    case Qt::LeftDockWidgetArea:
    case Qt::RightDockWidgetArea:
    case Qt::TopDockWidgetArea:
    case Qt::BottomDockWidgetArea:
        return registerDockWidget(name, static_cast<Qt::DockWidgetArea>(area));
    default:
        qel::log::Logger::log(0, "kernel/main/overseer", 209, "qel::main::Overseer::registerDockWidget", nullptr,
                              "No dock area %d: '%s' goes to the left", area, qPrintable(name));
        return registerDockWidget(name, Qt::LeftDockWidgetArea);
    }
}

QMdiSubWindow* Overseer::getWorkspaceWindow(const QString& title, QWidget* content)
{
    QMdiArea* area = getWorkspace();
    QMdiSubWindow* window = nullptr;
    runOnApplicationThread([&]() {
        window = area->addSubWindow(content);
        window->setWindowTitle(title);
        window->setAttribute(Qt::WA_DeleteOnClose);
    });
    return window;
}

QSettings* Overseer::getQSettings()
{
    if (!settings.load()) {
        runOnApplicationThread([this]() {
            if (!settings.load())
                settings.store(new QSettings(QCoreApplication::organizationName(), QCoreApplication::applicationName()));
        });
    }
    return settings.load();
}

QString Overseer::homeDirPath()
{
    return QDir::homePath();
}

bool Overseer::executeCommand(const QString& commandString, Command::CommandExecution mode, bool record)
{
    return processor->executeCommand(commandString, mode, record);
}

bool Overseer::executeNativeCommand(const QString& commandString)
{
    return processor->executeCommand(commandString, Command::EXECUTE_SYNCHRONOUS, true);
}

void Overseer::forwardLogRecord(const qel::log::LogRecord& record)
{
    if (record.level > 2000)
        return;
    {
        QMutexLocker locker(&consoleMutex);
        if (alreadyShown(record.text, recentLogMessages, recentSinkMessages))
            return;
    }
    appendToConsole(record.format());
}

void Overseer::forwardSinkMessage(const QString& message)
{
    {
        QMutexLocker locker(&consoleMutex);
        if (alreadyShown(message, recentSinkMessages, recentLogMessages))
            return;
    }
    appendToConsole(message);
}

void Overseer::appendToConsole(const QString& line)
{
    QMutexLocker locker(&consoleMutex);
    if (console) {
        console->appendText(line);
        return;
    }
    pendingLines.append(line);
    while (pendingLines.size() > MaximumPendingLines)
        pendingLines.removeFirst();
}

} // namespace main
} // namespace qel
