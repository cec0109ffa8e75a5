// Import plug-in for Wavefront OBJ files.
#include "module_scene/io/importer.h"
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/obj/objloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::scene::Importer::getInstance()->registerLoader(&qel::io::plugins::ObjLoader::create,
                                                                  QStringLiteral("obj"),
                                                                  QStringLiteral("Wavefront OBJ"));
}
