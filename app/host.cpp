#include "host.h"

#include "commandlinewidget.h"
#include "progressdisplay.h"
#include "projectmenu.h"
#include "scriptrunner.h"

#include "kernel/io/projectfile.h"
#include "kernel/main/abstractparameter.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/overseer.h"
#include "kernel/main/parameterset.h"
#include "kernel/main/sceneservice.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLibrary>
#include <QMainWindow>
#include <QTextStream>
#include <QThread>

#include <cstdio>
#include <typeinfo>
#include <vector>

using qel::main::Overseer;

namespace {

QString typeLabel(const std::type_info& type)
{
    if (type == typeid(bool))
        return QStringLiteral("bool");
    if (type == typeid(int))
        return QStringLiteral("int");
    if (type == typeid(unsigned int))
        return QStringLiteral("uint");
    if (type == typeid(double))
        return QStringLiteral("double");
    if (type == typeid(QString))
        return QStringLiteral("text");
    if (type == typeid(std::vector<double>))
        return QStringLiteral("[double,...]");
    if (type == typeid(std::vector<unsigned int>))
        return QStringLiteral("[uint,...]");
    if (type == typeid(std::vector<QString>))
        return QStringLiteral("[text,...]");
    if (type.name() == QByteArray("6QColor"))
        return QStringLiteral("color");
    return QString::fromLatin1(type.name());
}

QString describeSet(qel::main::ParameterSet* set)
{
    QStringList parameters;
    for (qel::main::AbstractParameter* parameter : *set->getParameterList())
        parameters << QStringLiteral("%1:%2").arg(parameter->getParameterName(), typeLabel(parameter->getTypeInfo()));
    return QStringLiteral("%1(%2)").arg(set->getID()).arg(parameters.join(QLatin1Char(',')));
}

void printLine(FILE* stream, const QString& text)
{
    std::fprintf(stream, "%s\n", text.toLocal8Bit().constData());
    std::fflush(stream);
}

} // namespace

int Host::run()
{
    progress.reset(new ProgressDisplay);
    loadModules();
    if (options.listCommands) {
        printCommands();
        shutdown();
        return 0;
    }
    bool ok = runScripts();
    if (ok && !options.screenshotFile.isEmpty())
        ok = saveScreenshot();
    if (ok && !options.dumpFile.isEmpty())
        ok = printSceneDump();
    if (!ok || options.isBatch()) {
        shutdown();
        return ok ? 0 : 1;
    }
    return runWindow();
}

void Host::loadModules()
{
    Overseer::getInstance()->getModuleManager()->loadModules(QCoreApplication::applicationDirPath());
}

void Host::printCommands() const
{
    for (qel::main::Command* command : Overseer::getInstance()->getCommandProcessor()->getCommands()) {
        QStringList sets;
        for (qel::main::ParameterSet* set : *command->getParameterSets())
            sets << describeSet(set);
        printLine(stdout, QStringLiteral("%1 %2").arg(command->getName(), sets.join(QLatin1Char(' '))).trimmed());
    }
}

bool Host::runScripts()
{
    ScriptRunner runner(Overseer::getInstance()->getCommandProcessor());
    bool ok = runner.runLines(openFilesCommands(), QStringLiteral("command line"));
    if (ok)
        ok = runner.runLines(options.commands, QStringLiteral("--exec"));
    if (ok && !options.runFile.isEmpty())
        ok = runner.runFile(options.runFile);
    if (!ok)
        printLine(stderr, QStringLiteral("qel: %1").arg(runner.lastError()));
    return ok;
}

// Files named on the command line are loaded as the file dialog loads them: one
// loadmodel each, placed clear of the models before it; a project file is opened.
QStringList Host::openFilesCommands() const
{
    QStringList commands;
    for (const QString& file : options.files) {
        const QFileInfo info(file);
        if (info.suffix().compare(QLatin1String(qel::io::ProjectFile::Suffix), Qt::CaseInsensitive) == 0)
            commands << QStringLiteral("openproject(%1)").arg(info.absoluteFilePath());
        else
            commands << QStringLiteral("loadmodel(%1,0,inplace)").arg(info.absoluteFilePath());
    }
    return commands;
}

qel::main::SceneService* Host::sceneService() const
{
    typedef qel::main::SceneService* (*ServiceAccessor)();
    const QDir folder(QCoreApplication::applicationDirPath());
    for (const QString& name : folder.entryList({QStringLiteral("lib*.so")}, QDir::Files)) {
        auto accessor = reinterpret_cast<ServiceAccessor>(
            QLibrary::resolve(folder.absoluteFilePath(name), "getSceneService"));
        if (accessor)
            return accessor();
    }
    return nullptr;
}

bool Host::saveScreenshot()
{
    qel::main::SceneService* service = sceneService();
    if (!service) {
        printLine(stderr, QStringLiteral("qel: no loaded module can render the scene"));
        return false;
    }
    const QStringList size = options.screenshotSize.split(QLatin1Char('x'));
    const QImage image = service->renderScene(QSize(size.at(0).toInt(), size.at(1).toInt()));
    if (image.isNull() || !image.save(options.screenshotFile)) {
        printLine(stderr, QStringLiteral("qel: could not save the screenshot to '%1'").arg(options.screenshotFile));
        return false;
    }
    return true;
}

bool Host::printSceneDump()
{
    qel::main::SceneService* service = sceneService();
    if (!service) {
        printLine(stderr, QStringLiteral("qel: no loaded module can dump the scene"));
        return false;
    }
    const QByteArray json = service->dumpScene().toUtf8();
    if (options.dumpFile == QLatin1String("-")) {
        std::fputs(json.constData(), stdout);
        std::fflush(stdout);
        return true;
    }
    QFile file(options.dumpFile);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(json) != json.size()) {
        printLine(stderr, QStringLiteral("qel: could not write the scene to '%1': %2").arg(options.dumpFile, file.errorString()));
        return false;
    }
    return true;
}

int Host::runWindow()
{
    Overseer* overseer = Overseer::getInstance();
    QMainWindow* window = overseer->getMainWindow();
    auto* commandLine = new CommandLineWidget;
    QObject::connect(commandLine, &CommandLineWidget::commandEntered, [overseer](const QString& command) {
        overseer->executeCommand(command, qel::main::Command::EXECUTE_SYNCHRONOUS, true);
    });
    QDockWidget* dock = overseer->registerDockWidget(QObject::tr("Command line"), Qt::BottomDockWidgetArea);
    dock->setWidget(commandLine);
    overseer->getMenuAndToolbarManager()->update();
    progress.reset();
    progress.reset(new ProgressDisplay(window));
    new ProjectMenu(window, overseer->getMenuAndToolbarManager());
    window->resize(1280, 900);
    window->show();
    commandLine->setFocus();
    const int code = QApplication::exec();
    shutdown();
    return code;
}

void Host::shutdown()
{
    // Waits for running commands, deletes the windows while the modules' code is
    // still loaded, then unloads the modules.
    progress.reset();
    Overseer::destroyInstance();
}
