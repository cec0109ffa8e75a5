// Import plug-in for STL files, binary and ASCII.
#include "module_scene/io/importer.h"
#include "plugins/io/common/pluginexport.h"
#include "plugins/io/stl/stlloader.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return qel::io::scene::Importer::getInstance()->registerLoader(&qel::io::plugins::StlLoader::create,
                                                                  QStringLiteral("stl"),
                                                                  QStringLiteral("STL (Stereolithography)"));
}
