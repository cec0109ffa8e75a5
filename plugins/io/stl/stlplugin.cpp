// Import plug-in for STL files, binary and ASCII.
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/stl/stlloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::plugins::FileLoader::registerFor<qel::io::plugins::StlLoader>(
        QStringLiteral("stl"), QStringLiteral("STL (Stereolithography)"));
}
