#include "module_scene/io/importer.h"

#include "kernel/log/logger.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/module.h"
#include "kernel/main/modulemanager.h"
#include "module_scene/io/loader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

namespace qel {
namespace io {
namespace scene {

namespace {

const char* const LOG_FILE = "module_scene/io/importer";
const char* const MODULE_NOT_FOUND = "Module 'Scene' was not found by the modulemanager!";

typedef bool (*RegisterFunction)();
typedef main::ThirdPartyInfos (*InfosFunction)();

} // namespace

Importer* Importer::mp_This = nullptr;

Importer* Importer::getInstance()
{
    if (!mp_This)
        mp_This = new Importer;
    return mp_This;
}

Importer::Importer() : fallbackLoader(nullptr) {}

Importer::Importer(const Importer& other)
    : plugins(other.plugins),
      pluginInfos(other.pluginInfos),
      loaders(other.loaders),
      loadableFiles(other.loadableFiles),
      fallbackLoader(other.fallbackLoader)
{
    log::Logger::log(0, LOG_FILE, 52, "qel::io::scene::Importer::Importer", nullptr, "Don't do this!");
}

Importer& Importer::operator=(const Importer& other)
{
    plugins = other.plugins;
    pluginInfos = other.pluginInfos;
    loaders = other.loaders;
    loadableFiles = other.loadableFiles;
    fallbackLoader = other.fallbackLoader;
    return *this;
}

Importer::~Importer()
{
    unloadPlugins();
    if (mp_This == this)
        mp_This = nullptr;
}

bool Importer::registerLoader(LoaderFactory factory, QString extension, QString description)
{
    const QString key = extension.toUpper();
    if (loaders.count(key)) {
        log::Logger::log(2000, LOG_FILE, 86, "qel::io::scene::Importer::registerLoader", nullptr,
                         "You could not register the same file extension twice!");
        return false;
    }
    loaders[key] = factory;
    loadableFiles[key] = description;
    return true;
}

Loader* Importer::getLoader(const QString& file)
{
    const auto found = loaders.find(QFileInfo(file).completeSuffix().toUpper());
    if (found == loaders.end())
        return nullptr;
    return found->second();
}

const std::map<QString, QString>* Importer::getLoadableFiles()
{
    return &loadableFiles;
}

bool Importer::registerFallbackLoader(LoaderFactory factory)
{
    if (fallbackLoader) {
        log::Logger::log(2000, LOG_FILE, __LINE__, "qel::io::scene::Importer::registerFallbackLoader", nullptr,
                         "Only one loader can read the files of unregistered types!");
        return false;
    }
    fallbackLoader = factory;
    return true;
}

Loader* Importer::getFallbackLoader(const QString& file)
{
    const auto found = loaders.find(QFileInfo(file).suffix().toUpper());
    if (found != loaders.end())
        return found->second();
    return fallbackLoader ? fallbackLoader() : nullptr;
}

void Importer::refreshPlugins()
{
    refreshPlugins(QCoreApplication::applicationDirPath() + "/plugins/io/");
}

void Importer::refreshPlugins(const QString& folder)
{
    unloadPlugins();
    std::list<main::ThirdPartyInfos*>* moduleInfos = sceneModuleInfos(118, "qel::io::scene::Importer::refreshPlugins");
    const QFileInfoList entries = QDir(folder).entryInfoList();
    for (const QFileInfo& entry : entries) {
        if (entry.isSymLink() || entry.baseName().isEmpty() || !QLibrary::isLibrary(entry.absoluteFilePath()))
            continue;
        loadPlugin(entry.absoluteFilePath(), moduleInfos);
    }
}

void Importer::loadPlugin(const QString& path, std::list<main::ThirdPartyInfos*>* moduleInfos)
{
    QLibrary* library = new QLibrary(path);
    if (!library->load()) {
        log::Logger::log(2000, LOG_FILE, 143, "qel::io::scene::Importer::refreshPlugins", nullptr,
                         "Couldn't load io plugin: '%s' - %s", qPrintable(QFileInfo(path).baseName()),
                         qPrintable(library->errorString()));
        delete library;
        return;
    }
    // A library without the entry point stays mapped; only the handle object goes.
    RegisterFunction doRegister = reinterpret_cast<RegisterFunction>(library->resolve("doRegister"));
    if (!doRegister) {
        delete library;
        return;
    }
    if (!doRegister()) {
        library->unload();
        delete library;
        return;
    }
    plugins.push_back(library);
    InfosFunction getInfos = reinterpret_cast<InfosFunction>(library->resolve("getInfos"));
    if (getInfos && moduleInfos) {
        const main::ThirdPartyInfos infos = getInfos();
        moduleInfos->push_back(new main::ThirdPartyInfos(infos));
        pluginInfos.push_back(infos);
    }
}

void Importer::unloadPlugins()
{
    loaders.clear();
    loadableFiles.clear();
    fallbackLoader = nullptr;
    for (QLibrary* library : plugins) {
        library->unload();
        delete library;
    }
    plugins.clear();
    std::list<main::ThirdPartyInfos*>* moduleInfos = sceneModuleInfos(171, "qel::io::scene::Importer::unloadPlugins");
    if (!moduleInfos)
        return;
    for (const main::ThirdPartyInfos& infos : pluginInfos) {
        for (auto entry = moduleInfos->begin(); entry != moduleInfos->end(); ++entry) {
            if (**entry == infos) {
                delete *entry;
                moduleInfos->erase(entry);
                break;
            }
        }
    }
    pluginInfos.clear();
}

std::list<main::ThirdPartyInfos*>* Importer::sceneModuleInfos(long line, const char* function)
{
    main::Module* module = main::ModuleManager::getInstance()->getModule("Scene");
    if (!module || !module->getInformationObject()) {
        log::Logger::log(2000, LOG_FILE, line, function, nullptr, MODULE_NOT_FOUND);
        return nullptr;
    }
    return module->getInformationObject()->getAdditionalInformations();
}

} // namespace scene
} // namespace io
} // namespace qel
