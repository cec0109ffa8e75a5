// Import plug-in for every further format that assimp reads.
#include "kernel/main/thirdpartyinfos.h"
#include "module_scene/io/importer.h"
#include "plugins/io/assimp/assimploader.h"
#include "plugins/io/common/pluginexport.h"

#include <assimp/version.h>

// Assimp tells most formats by their content too, so it also reads the files whose suffix
// no plug-in registered.
QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    using qel::io::plugins::AssimpLoader;
    bool registered = false;
    for (const auto& format : AssimpLoader::supportedExtensions())
        registered |= qel::io::plugins::FileLoader::registerFor<AssimpLoader>(format.first, format.second);
    registered |= qel::io::scene::Importer::getInstance()->registerFallbackLoader(&AssimpLoader::createRecognisingContent);
    return registered;
}

QEL_IO_PLUGIN_BEGIN_INFOS
QEL_IO_PLUGIN_EXPORT qel::main::ThirdPartyInfos getInfos()
{
    return qel::main::ThirdPartyInfos(
        QStringLiteral("Open Asset Import Library %1.%2.%3").arg(aiGetVersionMajor()).arg(aiGetVersionMinor()).arg(aiGetVersionPatch()),
        QStringLiteral("Reads the 3D formats for which the application has no reader of its own."),
        QStringLiteral("BSD-3-Clause"), QStringLiteral("https://www.assimp.org"));
}
QEL_IO_PLUGIN_END_INFOS
