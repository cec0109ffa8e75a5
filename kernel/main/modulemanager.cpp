#include "kernel/main/modulemanager.h"

#include "kernel/log/logger.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/module.h"
#include "kernel/main/modulefactory.h"
#include "kernel/main/overseer.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QMutexLocker>
#include <QSet>
#include <algorithm>
#include <exception>

namespace qel {
namespace main {

namespace {

typedef ModuleFactory* (*GetFactoryFunction)();
typedef void (*RecycleFactoryFunction)();

void logStatus(const QString& text)
{
    qel::log::Logger::log(3000, "kernel/main/modulemanager", 33, "qel::main::ModuleManager::loadModules", nullptr,
                          text);
}

QString moduleName(const ModuleFactory* factory)
{
    return factory->getInformationObject() ? factory->getInformationObject()->getName() : QString();
}

} // namespace

ModuleManager* ModuleManager::getInstance()
{
    static ModuleManager instance;
    return &instance;
}

int ModuleManager::loadModules(const QString& folder, const StatusFunction& status)
{
    const QDir directory(folder);
    if (!directory.exists()) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 53, "qel::main::ModuleManager::loadModules",
                              nullptr, "Module folder '%s' doesn't exist", qPrintable(folder));
        return 0;
    }
    // Versioned names and links lead to the same file: each file is loaded once.
    QSet<QString> seen;
    int added = 0;
    const QFileInfoList candidates =
        directory.entryInfoList(QStringList() << QStringLiteral("lib*.so*"), QDir::Files, QDir::Name);
    for (const QFileInfo& candidate : candidates) {
        const QString path = candidate.canonicalFilePath();
        if (path.isEmpty() || seen.contains(path) || !QLibrary::isLibrary(path))
            continue;
        seen.insert(path);
        if (loadLibrary(path, status))
            ++added;
    }
    if (added)
        refreshMenus();
    return added;
}

bool ModuleManager::loadLibrary(const QString& path, const StatusFunction& status)
{
    auto* library = new QLibrary(path);
    if (!library->load()) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 79, "qel::main::ModuleManager::loadLibrary", nullptr,
                              "Couldn't load library '%s': %s", qPrintable(path), qPrintable(library->errorString()));
        delete library;
        return false;
    }
    auto getFactory = reinterpret_cast<GetFactoryFunction>(library->resolve("getFactory"));
    if (!getFactory) {
        qel::log::Logger::log(3000, "kernel/main/modulemanager", 86, "qel::main::ModuleManager::loadLibrary", nullptr,
                              "'%s' is no module (no getFactory): skipped", qPrintable(path));
        // Other parts of the process may use the library: it stays mapped.
        delete library;
        return false;
    }
    ModuleFactory* factory = getFactory();
    if (!factory || isKnownFactory(factory)) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 94, "qel::main::ModuleManager::loadLibrary", nullptr,
                              "Library '%s' gave %s factory: skipped", qPrintable(path),
                              factory ? "an already loaded" : "no");
        delete library;
        return false;
    }
    if (!startModule(factory, library, status)) {
        if (auto recycle = reinterpret_cast<RecycleFactoryFunction>(library->resolve("recycleFactory")))
            recycle();
        library->unload();
        delete library;
        return false;
    }
    return true;
}

bool ModuleManager::addModule(ModuleFactory* factory, const StatusFunction& status)
{
    if (!factory || isKnownFactory(factory)) {
        qel::log::Logger::log(0, "kernel/main/modulemanager", 113, "qel::main::ModuleManager::addModule", nullptr,
                              "No factory or a factory already added");
        return false;
    }
    const bool started = startModule(factory, nullptr, status);
    if (started)
        refreshMenus();
    return started;
}

bool ModuleManager::isKnownFactory(const ModuleFactory* factory) const
{
    QMutexLocker locker(&mutex);
    return std::any_of(loadedModules.begin(), loadedModules.end(),
                       [factory](const LoadedModule& loaded) { return loaded.factory == factory; });
}

bool ModuleManager::startModule(ModuleFactory* factory, QLibrary* library, const StatusFunction& status)
{
    const char* const function = "qel::main::ModuleManager::startModule";
    const QString name = moduleName(factory);
    if (getModule(name)) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 135, function, nullptr,
                              "A module named '%s' is already loaded", qPrintable(name));
        return false;
    }
    Module* module = nullptr;
    try {
        module = factory->createModule();
    } catch (const std::exception& exception) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 143, function, nullptr,
                              "Factory of '%s' failed: %s", qPrintable(name), exception.what());
    }
    if (!module) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 147, function, nullptr,
                              "Factory of '%s' made no module", qPrintable(name));
        return false;
    }
    // Known before its load step: a module may look itself up while it loads.
    {
        QMutexLocker locker(&mutex);
        loadedModules.push_back(LoadedModule{library, factory, module});
    }
    try {
        registerCommands(factory, module);
        module->load(status ? status : StatusFunction(&logStatus));
    } catch (const std::exception& exception) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 159, function, nullptr,
                              "Module '%s' failed to start: %s", qPrintable(name), exception.what());
        {
            QMutexLocker locker(&mutex);
            loadedModules.erase(std::remove_if(loadedModules.begin(), loadedModules.end(),
                                               [module](const LoadedModule& loaded) { return loaded.module == module; }),
                                loadedModules.end());
        }
        unregisterCommands(module);
        delete module;
        return false;
    }
    return true;
}

void ModuleManager::registerCommands(ModuleFactory* factory, Module* module)
{
    for (ModuleFactory::CommandCreator creator : factory->getCommandCreators()) {
        if (Command* command = creator())
            module->registerCommand(command);
    }
}

void ModuleManager::unregisterCommands(Module* module)
{
    CommandProcessor* processor = Overseer::getInstance()->getCommandProcessor();
    for (const QString& name : module->getCommands())
        processor->unregisterCommand(name);
}

void ModuleManager::unloadModules()
{
    {
        QMutexLocker locker(&mutex);
        if (loadedModules.empty())
            return;
    }
    // The menus hold the actions of the commands that are about to go.
    Overseer* overseer = Overseer::getInstance();
    if (overseer->hasMainWindow())
        overseer->getMenuAndToolbarManager()->clear();
    // Last loaded goes first; a module stays findable while it is destroyed, since its
    // companions look it up on their way out.
    for (;;) {
        LoadedModule loaded;
        {
            QMutexLocker locker(&mutex);
            if (loadedModules.empty())
                break;
            loaded = loadedModules.back();
        }
        shutDown(loaded);
    }
    refreshMenus();
}

// `loaded` is the last entry of the list; it leaves the list once its module is gone.
void ModuleManager::shutDown(const LoadedModule loaded)
{
    try {
        loaded.module->doShutdownActions();
    } catch (const std::exception& exception) {
        qel::log::Logger::log(1000, "kernel/main/modulemanager", 199, "qel::main::ModuleManager::shutDown", nullptr,
                              "Module '%s' failed to shut down: %s", qPrintable(loaded.module->getName()),
                              exception.what());
    }
    unregisterCommands(loaded.module);
    delete loaded.module;
    {
        QMutexLocker locker(&mutex);
        loadedModules.pop_back();
    }
    if (!loaded.library)
        return;
    if (auto recycle = reinterpret_cast<RecycleFactoryFunction>(loaded.library->resolve("recycleFactory")))
        recycle();
    loaded.library->unload();
    delete loaded.library;
}

// Without a main window there is nothing to refresh: it builds its menus when it is made.
void ModuleManager::refreshMenus()
{
    Overseer* overseer = Overseer::getInstance();
    if (overseer->hasMainWindow())
        overseer->getMenuAndToolbarManager()->update();
}

Module* ModuleManager::getModule(const QString& name) const
{
    QMutexLocker locker(&mutex);
    for (const LoadedModule& loaded : loadedModules) {
        if (loaded.module->getName() == name)
            return loaded.module;
    }
    return nullptr;
}

Command* ModuleManager::getCommand(const QString& name) const
{
    return Overseer::getInstance()->getCommandProcessor()->getCommand(name);
}

std::vector<Module*> ModuleManager::getModules() const
{
    QMutexLocker locker(&mutex);
    std::vector<Module*> modules;
    for (const LoadedModule& loaded : loadedModules)
        modules.push_back(loaded.module);
    return modules;
}

} // namespace main
} // namespace qel

