// Import plug-in for Stanford Polygon File Format files.
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/ply/plyloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::plugins::FileLoader::registerFor<qel::io::plugins::PlyLoader>(
        QStringLiteral("ply"), QStringLiteral("Stanford Polygon File Format"));
}
