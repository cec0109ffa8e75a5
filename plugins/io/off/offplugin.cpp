// Import plug-in for Object File Format files.
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/off/offloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::plugins::FileLoader::registerFor<qel::io::plugins::OffLoader>(
        QStringLiteral("off"), QStringLiteral("Object File Format"));
}
