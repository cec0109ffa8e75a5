#pragma once

#include "kernel/main/thirdpartyinfos.h"

#include <QString>
#include <list>
#include <map>

class QLibrary;

namespace qel {
namespace io {
namespace scene {

class Loader;

// Finds the import plug-ins, keeps the table from file extension to loader factory, and
// hands out a fresh loader for a file name. A plug-in is a library in "plugins/io/" beside
// the executable exporting "doRegister" (required: it registers its loaders and answers
// whether to stay loaded) and "getInfos" (optional: its third-party notes).
//
// The tables are not locked: they change only at the module's start and end.
class Importer
{
public:
    typedef Loader* (*LoaderFactory)();

    // Created at the first call, without locking.
    static Importer* getInstance();
    ~Importer();

    // Refuses (level 2000) an extension already registered, in any letter case.
    bool registerLoader(LoaderFactory factory, QString extension, QString description);
    // A new loader for the file's complete suffix (everything behind the first dot of its
    // name), owned by the caller; null when no plug-in reads it.
    Loader* getLoader(const QString& file);
    // Upper-case extension to description, in key order.
    const std::map<QString, QString>* getLoadableFiles();

    // The loader for files that no plug-in registered the type of: it recognises a file by
    // its content and refuses what it doesn't know. Only one is kept; a second is refused
    // (level 2000).
    bool registerFallbackLoader(LoaderFactory factory);
    // For a file that getLoader has no loader for: the loader of its last suffix (so that
    // "scan.v2.stl" is read as STL), else the fallback loader; null when there is neither.
    // Owned by the caller.
    Loader* getFallbackLoader(const QString& file);

    // Unloads everything, then loads the plug-ins of the folder "plugins/io/" beside the
    // executable.
    void refreshPlugins();
    // The same with another folder (tests, tools).
    void refreshPlugins(const QString& folder);
    void unloadPlugins();

    // Libraries kept loaded, in loading order.
    const std::list<QLibrary*>& getPlugins() const { return plugins; }
    const std::list<main::ThirdPartyInfos>& getPluginInfos() const { return pluginInfos; }

private:
    Importer();
    Importer(const Importer& other);
    Importer& operator=(const Importer& other);

    // The third-party list of the Scene module, or null (logged) without that module.
    static std::list<main::ThirdPartyInfos*>* sceneModuleInfos(long line, const char* function);
    void loadPlugin(const QString& path, std::list<main::ThirdPartyInfos*>* moduleInfos);

    static Importer* mp_This;

    std::list<QLibrary*> plugins;
    std::list<main::ThirdPartyInfos> pluginInfos;
    std::map<QString, LoaderFactory> loaders;
    std::map<QString, QString> loadableFiles;
    LoaderFactory fallbackLoader;
};

} // namespace scene
} // namespace io
} // namespace qel
