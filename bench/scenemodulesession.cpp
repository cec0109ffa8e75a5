#include "scenemodulesession.h"

#include "kernel/main/modulemanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "module_scene/modulescenefactory.h"

#include <QApplication>
#include <cstdio>

SceneModuleSession::SceneModuleSession(int& argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!QCoreApplication::instance())
        application.reset(new QApplication(argc, argv));
    qel::main::ModuleManager::getInstance()->addModule(getFactory());
}

SceneModuleSession::~SceneModuleSession()
{
    qel::main::Overseer::destroyInstance();
}

std::unique_ptr<qel::io::scene::Loader> SceneModuleSession::loaderFor(const QString& path)
{
    std::unique_ptr<qel::io::scene::Loader> loader(qel::io::scene::Importer::getInstance()->getLoader(path));
    if (!loader)
        std::fprintf(stderr, "qel-bench: no loader for the file; build the target qel_io_plugins\n");
    return loader;
}
