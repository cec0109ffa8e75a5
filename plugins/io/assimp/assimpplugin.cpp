// Import plug-in for every further format that assimp reads.
#include "kernel/main/thirdpartyinfos.h"
#include "module_scene/io/importer.h"
#include "plugins/io/assimp/assimploader.h"
#include "plugins/io/common/pluginexport.h"

#include <assimp/version.h>

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    bool registered = false;
    for (const auto& format : qel::io::plugins::AssimpLoader::supportedExtensions()) {
        registered |= qel::io::plugins::FileLoader::registerFor<qel::io::plugins::AssimpLoader>(format.first, format.second);
    }
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
