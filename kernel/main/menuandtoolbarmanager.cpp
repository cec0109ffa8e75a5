#include "kernel/main/menuandtoolbarmanager.h"

#include "kernel/gui/abstractcommandguiwidget.h"
#include "kernel/gui/defaultcommandwidget.h"
#include "kernel/gui/parameterdialog.h"
#include "kernel/log/logger.h"
#include "kernel/main/command.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/contextmenuupdater.h"
#include "kernel/main/module.h"
#include "kernel/main/modulemanager.h"

#include <QAction>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMetaObject>
#include <QThread>
#include <QToolBar>
#include <algorithm>
#include <climits>

namespace qel {
namespace main {

namespace {

void onApplicationThread(const boost::function<void()>& work)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() == application->thread())
        work();
    else
        QMetaObject::invokeMethod(application, [&work]() { work(); }, Qt::BlockingQueuedConnection);
}

// The sets an entry offers: those it is restricted to (by id), else all of the command.
std::vector<ParameterSet*> offeredSets(Command* command, CommandGUIDescriptor* descriptor)
{
    std::vector<ParameterSet*> sets = *command->getParameterSets();
    const std::vector<ParameterSet> used = descriptor->getUsedSets();
    if (used.empty())
        return sets;
    sets.erase(std::remove_if(sets.begin(), sets.end(),
                              [&used](ParameterSet* set) {
                                  return std::none_of(used.begin(), used.end(), [set](const ParameterSet& usedSet) {
                                      return usedSet.getID() == set->getID();
                                  });
                              }),
               sets.end());
    return sets;
}

} // namespace

MenuAndToolbarManager::MenuAndToolbarManager(QMainWindow* mainWindow, CommandProcessor* processor,
                                             ModuleManager* modules)
    : mainWindow(mainWindow), processor(processor), modules(modules)
{
}

MenuAndToolbarManager::~MenuAndToolbarManager()
{
    removeAll();
    for (ContextMenuUpdater* updater : updaters)
        updater->forgetManager();
    qDeleteAll(contextMenus);
}

void MenuAndToolbarManager::setHostPosition(int flag, const QString& name, const Position& position)
{
    hostPositions[flag][name] = position.getPosition();
}

void MenuAndToolbarManager::update()
{
    onApplicationThread([this]() { rebuild(); });
}

void MenuAndToolbarManager::clear()
{
    onApplicationThread([this]() {
        removeAll();
        entries.clear();
        for (QMenu* menu : contextMenus)
            menu->clear();
        refreshUpdaters();
    });
}

void MenuAndToolbarManager::rebuild()
{
    collectEntries();
    buildMenus();
    buildToolBars();
    buildContextMenus();
}

void MenuAndToolbarManager::collectEntries()
{
    entries.clear();
    // Commands come sorted by name, so equal positions keep that order.
    for (Command* command : processor->getCommands()) {
        for (CommandGUIDescriptor* descriptor : command->getGUIDescriptors()) {
            if (descriptor)
                entries[descriptor->getFlag()][descriptor->getLocation()].push_back(descriptor);
        }
    }
    for (CommandGUIDescriptor* descriptor : hostEntries)
        entries[descriptor->getFlag()][descriptor->getLocation()].push_back(descriptor);
    for (auto& flagPlaces : entries) {
        for (auto& place : flagPlaces.second)
            std::stable_sort(place.second.begin(), place.second.end(),
                             [](CommandGUIDescriptor* a, CommandGUIDescriptor* b) {
                                 return a->getPosition() < b->getPosition();
                             });
    }
}

int MenuAndToolbarManager::placePosition(int flag, const QString& name) const
{
    bool found = false;
    int position = INT_MAX;
    if (modules) {
        for (Module* module : modules->getModules()) {
            const Module::GUILocations& locations = module->getGUIDescriptions();
            const auto places = locations.find(flag);
            if (places == locations.end())
                continue;
            const auto place = places->second.find(name);
            if (place != places->second.end()) {
                position = std::min(position, place->second.getPosition());
                found = true;
            }
        }
    }
    if (!found) {
        const auto places = hostPositions.find(flag);
        if (places != hostPositions.end() && places->second.count(name))
            position = places->second.at(name);
    }
    return position;
}

QStringList MenuAndToolbarManager::orderedNames(int flag) const
{
    std::vector<std::pair<int, QString>> order;
    const auto places = entries.find(flag);
    if (places != entries.end()) {
        for (const auto& place : places->second)
            order.emplace_back(placePosition(flag, place.first), place.first);
    }
    std::sort(order.begin(), order.end());
    QStringList names;
    for (const auto& entry : order)
        names.append(entry.second);
    return names;
}

void MenuAndToolbarManager::removeAll()
{
    for (const QPointer<QMenu>& menu : menus) {
        if (!menu)
            continue;
        if (mainWindow)
            mainWindow->menuBar()->removeAction(menu->menuAction());
        delete menu.data();
    }
    menus.clear();
    menuOrder.clear();
    for (const QPointer<QToolBar>& toolBar : toolBars) {
        if (!toolBar)
            continue;
        if (mainWindow)
            mainWindow->removeToolBar(toolBar);
        delete toolBar.data();
    }
    toolBars.clear();
    toolBarOrder.clear();
}

void MenuAndToolbarManager::buildMenus()
{
    for (const QPointer<QMenu>& menu : menus) {
        if (menu && mainWindow)
            mainWindow->menuBar()->removeAction(menu->menuAction());
    }
    menuOrder = orderedNames(CommandGUIDescriptor::MAINMENU);
    for (const QString& name : menus.keys()) {
        if (!menuOrder.contains(name)) {
            delete menus.value(name).data();
            menus.remove(name);
        }
    }
    for (const QString& name : menuOrder) {
        QPointer<QMenu> menu = menus.value(name);
        if (!menu) {
            menu = new QMenu(name, mainWindow);
            menu->setObjectName(name);
            menus.insert(name, menu);
        }
        fillMenu(menu, entries[CommandGUIDescriptor::MAINMENU][name]);
        if (mainWindow)
            mainWindow->menuBar()->addMenu(menu);
    }
}

void MenuAndToolbarManager::buildToolBars()
{
    for (const QPointer<QToolBar>& toolBar : toolBars) {
        if (toolBar && mainWindow)
            mainWindow->removeToolBar(toolBar);
    }
    toolBarOrder = orderedNames(CommandGUIDescriptor::TOOLBAR);
    for (const QString& name : toolBars.keys()) {
        if (!toolBarOrder.contains(name)) {
            delete toolBars.value(name).data();
            toolBars.remove(name);
        }
    }
    for (const QString& name : toolBarOrder) {
        QPointer<QToolBar> toolBar = toolBars.value(name);
        if (!toolBar) {
            toolBar = new QToolBar(name, mainWindow);
            toolBar->setObjectName(name);
            toolBars.insert(name, toolBar);
        }
        toolBar->clear();
        for (CommandGUIDescriptor* descriptor : entries[CommandGUIDescriptor::TOOLBAR][name]) {
            connectAction(descriptor);
            toolBar->addAction(descriptor->getQAction());
        }
        if (mainWindow) {
            mainWindow->addToolBar(toolBar);
            toolBar->show();
        }
    }
}

void MenuAndToolbarManager::buildContextMenus()
{
    const Places& places = entries[CommandGUIDescriptor::CONTEXTMENU];
    for (const auto& place : places)
        getContextMenu(place.first);
    for (auto menu = contextMenus.begin(); menu != contextMenus.end(); ++menu) {
        const auto place = places.find(menu.key());
        fillMenu(menu.value(), place == places.end() ? std::vector<CommandGUIDescriptor*>() : place->second);
    }
    refreshUpdaters();
}

void MenuAndToolbarManager::fillMenu(QMenu* menu, const std::vector<CommandGUIDescriptor*>& menuEntries)
{
    // The actions belong to their descriptors: clear() only takes them out.
    menu->clear();
    for (CommandGUIDescriptor* descriptor : menuEntries) {
        connectAction(descriptor);
        menu->addAction(descriptor->getQAction());
    }
}

void MenuAndToolbarManager::connectAction(CommandGUIDescriptor* descriptor)
{
    QAction* action = descriptor->getQAction();
    QObject::disconnect(action, nullptr, this, nullptr);
    // The action dies with its descriptor, and the connection with it.
    connect(action, &QAction::triggered, this, [this, descriptor]() { trigger(descriptor); });
}

void MenuAndToolbarManager::refreshUpdaters()
{
    for (ContextMenuUpdater* updater : updaters)
        updater->refresh();
}

QMenu* MenuAndToolbarManager::getMenu(const QString& name) const
{
    return menus.value(name).data();
}

QToolBar* MenuAndToolbarManager::getToolBar(const QString& name) const
{
    return toolBars.value(name).data();
}

QMenu* MenuAndToolbarManager::getContextMenu(const QString& name)
{
    QMenu* menu = contextMenus.value(name);
    if (!menu) {
        onApplicationThread([&]() {
            menu = new QMenu(name);
            menu->setObjectName(name);
        });
        contextMenus.insert(name, menu);
    }
    return menu;
}

QList<QAction*> MenuAndToolbarManager::getContextMenuActions(const QString& name) const
{
    QMenu* menu = contextMenus.value(name);
    return menu ? menu->actions() : QList<QAction*>();
}

QStringList MenuAndToolbarManager::getMenuNames() const
{
    return menuOrder;
}

QStringList MenuAndToolbarManager::getToolBarNames() const
{
    return toolBarOrder;
}

QStringList MenuAndToolbarManager::getSettingsPages() const
{
    return orderedNames(CommandGUIDescriptor::SETTINGS);
}

std::vector<CommandGUIDescriptor*> MenuAndToolbarManager::getEntries(int flag, const QString& location) const
{
    const auto places = entries.find(flag);
    if (places == entries.end())
        return std::vector<CommandGUIDescriptor*>();
    const auto place = places->second.find(location);
    return place == places->second.end() ? std::vector<CommandGUIDescriptor*>() : place->second;
}

void MenuAndToolbarManager::addHostEntry(CommandGUIDescriptor* descriptor)
{
    if (descriptor && std::find(hostEntries.begin(), hostEntries.end(), descriptor) == hostEntries.end())
        hostEntries.push_back(descriptor);
    update();
}

void MenuAndToolbarManager::removeHostEntry(CommandGUIDescriptor* descriptor)
{
    hostEntries.erase(std::remove(hostEntries.begin(), hostEntries.end(), descriptor), hostEntries.end());
    update();
}

// Disabling is about these entries: a disabled command's entry does nothing, its open
// function included, while its command string still runs.
void MenuAndToolbarManager::trigger(CommandGUIDescriptor* descriptor)
{
    Command* command = descriptor->getCommand();
    if (command && command->isDisabled()) {
        qel::log::Logger::log(2000, "kernel/main/menuandtoolbarmanager", 346,
                              "qel::main::MenuAndToolbarManager::trigger", nullptr, "Command '%s' is disabled",
                              qPrintable(command->getName()));
        return;
    }
    const CommandGUIDescriptor::GUIOpenFunction open = descriptor->getGUIOpenFunction();
    if (open) {
        open(descriptor->getQAction(), descriptor);
        return;
    }
    if (!command) {
        qel::log::Logger::log(0, "kernel/main/menuandtoolbarmanager", 341, "qel::main::MenuAndToolbarManager::trigger",
                              nullptr, "Entry '%s' has no command", qPrintable(descriptor->getNameOnGUI()));
        return;
    }
    if (qel::gui::DefaultCommandWidget* widget = command->getCommandWidget()) {
        widget->show();
        widget->raise();
        return;
    }
    const std::vector<ParameterSet*> sets = offeredSets(command, descriptor);
    if (sets.empty()) {
        runWithoutDialog(command);
        return;
    }
    std::vector<ParameterSet> copies;
    for (ParameterSet* set : sets)
        copies.push_back(*set);
    if (qel::gui::AbstractCommandGuiWidget* window = command->getGUIWindow(&copies)) {
        window->show();
        window->raise();
        return;
    }
    openParameterDialog(command, sets);
}

void MenuAndToolbarManager::runWithoutDialog(Command* command)
{
    Command* copy = command->clone();
    if (!copy) {
        qel::log::Logger::log(1000, "kernel/main/menuandtoolbarmanager", 374,
                              "qel::main::MenuAndToolbarManager::runWithoutDialog", nullptr,
                              "Command '%s' can't be copied to run", qPrintable(command->getName()));
        return;
    }
    processor->processCommand(copy, command->getExecutionMode(), true);
}

void MenuAndToolbarManager::openParameterDialog(Command* command, const std::vector<ParameterSet*>& sets)
{
    qel::gui::ParameterDialog dialog(command, sets, mainWindow);
    if (dialog.exec() == QDialog::Accepted)
        processor->executeCommand(dialog.getCommandString(), command->getExecutionMode(), true);
}

void MenuAndToolbarManager::addContextMenuUpdater(ContextMenuUpdater* updater)
{
    if (updater && !updaters.contains(updater))
        updaters.append(updater);
}

void MenuAndToolbarManager::removeContextMenuUpdater(ContextMenuUpdater* updater)
{
    updaters.removeAll(updater);
}

} // namespace main
} // namespace qel
