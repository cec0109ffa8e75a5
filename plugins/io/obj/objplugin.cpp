// Import plug-in for Wavefront OBJ files.
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/obj/objloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::plugins::FileLoader::registerFor<qel::io::plugins::ObjLoader>(
        QStringLiteral("obj"), QStringLiteral("Wavefront OBJ"));
}
