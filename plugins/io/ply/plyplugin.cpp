// Import plug-in for Stanford Polygon File Format files.
#include "module_scene/io/importer.h"
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/ply/plyloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::scene::Importer::getInstance()->registerLoader(&qel::io::plugins::PlyLoader::create,
                                                                  QStringLiteral("ply"),
                                                                  QStringLiteral("Stanford Polygon File Format"));
}
