#include "projectmenu.h"

#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/overseer.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>

using qel::io::ProjectManager;
using qel::main::CommandGUIDescriptor;
using qel::main::Overseer;

namespace {

const char* const DirectorySetting = "project/directory";

QString fileFilter()
{
    return QObject::tr("qel projects (*.%1)").arg(qel::io::ProjectFile::Suffix);
}

} // namespace

ProjectMenu::ProjectMenu(QMainWindow* window, qel::main::MenuAndToolbarManager* menus)
    : QObject(window), window(window), menus(menus), recentMenu(new QMenu), recent(Overseer::getInstance()->getQSettings())
{
    addEntry(tr("New"), -50, QKeySequence::New, [this] { newProject(); });
    addEntry(tr("Open..."), -40, QKeySequence::Open, [this] { openProject(); });
    addEntry(tr("Open Recent"), -35, QKeySequence(), [] {})->getQAction()->setMenu(recentMenu.get());
    addEntry(tr("Save"), -30, QKeySequence::Save, [this] { save(); });
    addEntry(tr("Save As..."), -20, QKeySequence::SaveAs, [this] { saveAs(); });
    addEntry(tr("Quit"), 1000, QKeySequence::Quit, [this] { this->window->close(); });

    ProjectManager* manager = ProjectManager::getInstance();
    connect(manager, &ProjectManager::modifiedChanged, this, &ProjectMenu::updateTitle);
    connect(manager, &ProjectManager::currentFileChanged, this, &ProjectMenu::rememberFile);
    window->installEventFilter(this);
    updateTitle();
    updateRecentMenu();
}

ProjectMenu::~ProjectMenu()
{
    for (const auto& entry : entries) {
        if (menus)
            menus->removeHostEntry(entry.get());
    }
}

CommandGUIDescriptor* ProjectMenu::addEntry(const QString& text, int position, const QKeySequence& shortcut,
                                            const std::function<void()>& action)
{
    auto* entry = new CommandGUIDescriptor(CommandGUIDescriptor::MAINMENU, tr("File"), position, text, text, nullptr);
    entry->setShortcut(shortcut);
    entry->setGUIOpenFunction([action](QAction*, CommandGUIDescriptor*) { action(); });
    entries.emplace_back(entry);
    if (menus)
        menus->addHostEntry(entry);
    return entry;
}

bool ProjectMenu::run(const QString& command)
{
    return Overseer::getInstance()->executeNativeCommand(command);
}

void ProjectMenu::newProject()
{
    if (mayDropChanges())
        run(QStringLiteral("newproject"));
}

void ProjectMenu::openProject()
{
    if (!mayDropChanges())
        return;
    const QString file = askForFile(false);
    if (!file.isEmpty())
        run(QStringLiteral("openproject(%1)").arg(file));
}

// A file that is gone leaves the list once opening it failed.
void ProjectMenu::openRecent(const QString& file)
{
    if (!mayDropChanges())
        return;
    if (!run(QStringLiteral("openproject(%1)").arg(file)) && !QFileInfo::exists(file)) {
        recent.remove(file);
        updateRecentMenu();
    }
}

bool ProjectMenu::save()
{
    if (ProjectManager::getInstance()->getCurrentFile().isEmpty())
        return saveAs();
    return run(QStringLiteral("saveproject")) && !ProjectManager::getInstance()->isModified();
}

bool ProjectMenu::saveAs()
{
    QString file = askForFile(true);
    if (file.isEmpty())
        return false;
    if (QFileInfo(file).suffix().isEmpty())
        file += QLatin1Char('.') + QLatin1String(qel::io::ProjectFile::Suffix);
    return run(QStringLiteral("saveproject(%1)").arg(file)) && !ProjectManager::getInstance()->isModified();
}

bool ProjectMenu::mayDropChanges()
{
    ProjectManager* manager = ProjectManager::getInstance();
    if (!manager->isModified())
        return true;
    const QMessageBox::StandardButton answer = QMessageBox::question(
        window, QCoreApplication::applicationName(),
        tr("The project has unsaved changes. Do you want to save them?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

QString ProjectMenu::askForFile(bool saving)
{
    QSettings* settings = Overseer::getInstance()->getQSettings();
    const QString current = ProjectManager::getInstance()->getCurrentFile();
    const QString folder = current.isEmpty() ? settings->value(DirectorySetting, Overseer::homeDirPath()).toString()
                                             : QFileInfo(current).absolutePath();
    const QFileDialog::Options options = QFileDialog::DontUseNativeDialog;
    const QString file = saving ? QFileDialog::getSaveFileName(window, tr("Save Project As"), folder, fileFilter(),
                                                               nullptr, options)
                                : QFileDialog::getOpenFileName(window, tr("Open Project"), folder, fileFilter(),
                                                               nullptr, options);
    if (!file.isEmpty())
        settings->setValue(DirectorySetting, QFileInfo(file).absolutePath());
    return file;
}

void ProjectMenu::updateTitle()
{
    if (!window)
        return;
    const QString file = ProjectManager::getInstance()->getCurrentFile();
    const QString name = file.isEmpty() ? tr("Untitled") : QFileInfo(file).completeBaseName();
    window->setWindowTitle(QStringLiteral("%1[*] - %2").arg(name, QCoreApplication::applicationName()));
    window->setWindowModified(ProjectManager::getInstance()->isModified());
}

void ProjectMenu::rememberFile(const QString& file)
{
    if (!file.isEmpty()) {
        recent.add(file);
        updateRecentMenu();
    }
    updateTitle();
}

void ProjectMenu::updateRecentMenu()
{
    recentMenu->clear();
    const QStringList files = recent.getFiles();
    for (const QString& file : files) {
        QAction* action = recentMenu->addAction(QFileInfo(file).fileName());
        action->setToolTip(file);
        connect(action, &QAction::triggered, this, [this, file] { openRecent(file); });
    }
    recentMenu->setEnabled(!files.isEmpty());
}

bool ProjectMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window && event->type() == QEvent::Close && !mayDropChanges()) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
