#pragma once

#include <QMutex>
#include <QString>
#include <boost/function.hpp>
#include <vector>

class QLibrary;

namespace qel {
namespace main {

class Command;
class Module;
class ModuleFactory;

// Loads the module libraries, builds their modules and registers their commands, and
// takes all of it down again in reverse order.
class ModuleManager
{
public:
    typedef boost::function<void(const QString&)> StatusFunction;

    static ModuleManager* getInstance();

    // Loads every library "lib*.so*" of the folder that exports getFactory; others are
    // logged and skipped. Returns the number of modules added. The status function gets
    // the modules' progress texts (they are logged when none is given).
    int loadModules(const QString& folder, const StatusFunction& status = StatusFunction());
    // Adds a module whose factory is linked in; the factory stays the caller's.
    bool addModule(ModuleFactory* factory, const StatusFunction& status = StatusFunction());
    // Shuts every module down, newest first: doShutdownActions, its commands unregistered,
    // the module deleted, the library's recycleFactory called and the library unloaded.
    void unloadModules();

    Module* getModule(const QString& name) const;
    Command* getCommand(const QString& name) const;
    std::vector<Module*> getModules() const;

private:
    struct LoadedModule
    {
        QLibrary* library;
        ModuleFactory* factory;
        Module* module;
    };

    ModuleManager() = default;
    ModuleManager(const ModuleManager&) = delete;
    ModuleManager& operator=(const ModuleManager&) = delete;

    bool loadLibrary(const QString& path, const StatusFunction& status);
    bool startModule(ModuleFactory* factory, QLibrary* library, const StatusFunction& status);
    bool isKnownFactory(const ModuleFactory* factory) const;
    void registerCommands(ModuleFactory* factory, Module* module);
    void unregisterCommands(Module* module);
    void shutDown(const LoadedModule loaded);
    void refreshMenus();

    mutable QMutex mutex;
    std::vector<LoadedModule> loadedModules;
};

} // namespace main
} // namespace qel
