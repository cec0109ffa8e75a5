#pragma once

#include <QtGlobal>

// The entry points of an import plug-in, under their plain C names, found by the Importer
// through QLibrary::resolve: "doRegister" (required) and "getInfos" (optional, returns the
// host's ThirdPartyInfos by value, which both sides compile alike).
#define QEL_IO_PLUGIN_EXPORT extern "C" Q_DECL_EXPORT

#if defined(__clang__)
#define QEL_IO_PLUGIN_BEGIN_INFOS _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wreturn-type-c-linkage\"")
#define QEL_IO_PLUGIN_END_INFOS _Pragma("clang diagnostic pop")
#else
#define QEL_IO_PLUGIN_BEGIN_INFOS
#define QEL_IO_PLUGIN_END_INFOS
#endif
