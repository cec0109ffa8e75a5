// A library without "doRegister": the Importer must pass it by.
#include <QtGlobal>

extern "C" Q_DECL_EXPORT int notAnImportPlugin()
{
    return 42;
}
