#pragma once

#include "kernel/main/command.h"
#include "kernel/log/logrecord.h"
#include "kernel/main/outputconsole.h"

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>
#include <atomic>
#include <boost/function.hpp>

class QDockWidget;
class QMainWindow;
class QMdiArea;
class QMdiSubWindow;
class QSettings;
class QThread;

namespace qel {
namespace util {
class Worker;
}

namespace main {

class CommandProcessor;
class MenuAndToolbarManager;
class ModuleManager;

// The host's services for the modules: main window and workspace, docks, the output
// console, settings, the command processor and the application thread. Every entry may
// be called from any thread; widgets are made on the application thread.
class Overseer : public QObject
{
    Q_OBJECT

public:
    typedef qel::main::OutputConsole OutputConsole;

    // Made on first use; a QApplication must exist.
    static Overseer* getInstance();
    // The host's last step before the application object goes: deletes the main window
    // with every widget in it while the modules' code is still loaded, then unloads the
    // modules and deletes the services.
    static void destroyInstance();

    QMainWindow* getMainWindow();
    // Whether the main window exists (asking doesn't make it).
    bool hasMainWindow() const;
    QThread* getApplicationThread() const;

    // Queues the worker for the application thread; there it runs at once.
    void transmitWorker(qel::util::Worker* worker);

    QDockWidget* registerDockWidget(const QString& name, Qt::DockWidgetArea area);
    // The area as a number (Qt::DockWidgetArea's values); an invalid one means the left.
    QDockWidget* registerDockWidget(const QString& name, int area);
    // Wraps the content in a window of the workspace, deleted when it closes.
    QMdiSubWindow* getWorkspaceWindow(const QString& title, QWidget* content);
    QMdiArea* getWorkspace();

    // The application's settings (organisation and application name of the QCoreApplication).
    QSettings* getQSettings();
    static QString homeDirPath();

    OutputConsole* getOutputConsole();

    bool executeCommand(const QString& commandString, Command::CommandExecution mode, bool record);
    // A command string built by a module: synchronous, recorded.
    bool executeNativeCommand(const QString& commandString);

    CommandProcessor* getCommandProcessor() const { return processor; }
    ModuleManager* getModuleManager() const;
    MenuAndToolbarManager* getMenuAndToolbarManager();

private:
    Overseer();
    ~Overseer() override;

    static Overseer* createInstance();
    static void runOnApplicationThread(const boost::function<void()>& work);
    void createMainWindow();
    void deleteMainWindow();
    void forwardLogRecord(const qel::log::LogRecord& record);
    void forwardSinkMessage(const QString& message);
    // Never blocks: lines that come before the console exists wait for it.
    void appendToConsole(const QString& line);

    CommandProcessor* processor;
    // Written on the application thread only, read anywhere.
    std::atomic<QMainWindow*> mainWindow;
    std::atomic<QSettings*> settings;
    QMdiArea* workspace;
    OutputConsole* console;
    MenuAndToolbarManager* menuManager;
    int logListener;

    QMutex consoleMutex;
    QStringList pendingLines;
    // A message reported to the sink is logged as well: the console shows it once.
    QStringList recentSinkMessages;
    QStringList recentLogMessages;
};

} // namespace main
} // namespace qel
