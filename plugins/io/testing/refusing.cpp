// A plug-in whose "doRegister" declines: the Importer must unload it again.
#include "plugins/io/common/pluginexport.h"

QEL_IO_PLUGIN_EXPORT bool doRegister()
{
    return false;
}
