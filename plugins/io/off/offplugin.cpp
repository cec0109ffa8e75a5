// Import plug-in for Object File Format files.
#include "module_scene/io/importer.h"
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/off/offloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::scene::Importer::getInstance()->registerLoader(&qel::io::plugins::OffLoader::create,
                                                                  QStringLiteral("off"),
                                                                  QStringLiteral("Object File Format"));
}
