// Plug-in discovery and the extension table of the Importer.
#include "kernel/main/informationobject.h"
#include "kernel/main/module.h"
#include "kernel/main/modulefactory.h"
#include "kernel/main/modulemanager.h"
#include "support/logcapture.h"
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "test_loadfiles.h"

#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>

namespace qel {
namespace test {
namespace {

using io::scene::Importer;

const char* const TWICE = "You could not register the same file extension twice!";

QString plugin(const char* name)
{
    return pluginFolder() + QStringLiteral("/libqelio_%1.so").arg(name);
}

QString testPlugin(const char* name)
{
    return QStringLiteral(QEL_BINARY_DIR "/testplugins/libqelio_test_%1.so").arg(name);
}

io::scene::Loader* noLoader()
{
    return nullptr;
}

class ImporterTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        ASSERT_TRUE(QFile::exists(plugin("stl"))) << "build the target qel_io_plugins first";
    }
    void TearDown() override { Importer::getInstance()->unloadPlugins(); }

    void copy(const QString& from, const char* name) { ASSERT_TRUE(QFile::copy(from, folder.filePath(name))); }

    QTemporaryDir folder;
};

TEST_F(ImporterTest, EachExtensionOfTheProjectsPluginsIsRegisteredOnce)
{
    LogCapture log;
    Importer::getInstance()->refreshPlugins(pluginFolder());
    EXPECT_EQ(0, log.count(TWICE));
    const std::map<QString, QString>& files = *Importer::getInstance()->getLoadableFiles();
    for (const char* own : {"STL", "PLY", "OBJ", "OFF"})
        EXPECT_EQ(1u, files.count(own)) << own;
    // assimp brings the rest.
    for (const char* other : {"3DS", "FBX", "DAE", "GLTF", "X"})
        EXPECT_EQ(1u, files.count(other)) << other;
    EXPECT_EQ(5u, Importer::getInstance()->getPlugins().size());
}

TEST_F(ImporterTest, LoadersAreFoundByTheCompleteSuffixInAnyCase)
{
    Importer::getInstance()->refreshPlugins(pluginFolder());
    std::unique_ptr<io::scene::Loader> loader(Importer::getInstance()->getLoader("/some/where/Model.StL"));
    EXPECT_TRUE(loader);
    EXPECT_FALSE(Importer::getInstance()->getLoader("head.v2.stl"));
    EXPECT_FALSE(Importer::getInstance()->getLoader("no_suffix"));
    EXPECT_FALSE(Importer::getInstance()->getLoader("unknown.qwerty"));
}

TEST_F(ImporterTest, TheFallbackReadsByTheLastSuffixThenByContent)
{
    Importer* importer = Importer::getInstance();
    importer->refreshPlugins(pluginFolder());
    // The complete suffix finds nothing; the last one does.
    ASSERT_TRUE(QFile::copy(QStringLiteral(QEL_SOURCE_DIR "/samples/sample.ply"), folder.filePath("sample.v1.ply")));
    EXPECT_FALSE(importer->getLoader(folder.filePath("sample.v1.ply")));
    std::unique_ptr<io::scene::Loader> byLastSuffix(importer->getFallbackLoader(folder.filePath("sample.v1.ply")));
    ASSERT_TRUE(byLastSuffix);
    std::unique_ptr<scene::MeshModel> mesh(byLastSuffix->loadMesh(folder.filePath("sample.v1.ply")));
    EXPECT_TRUE(mesh) << qPrintable(byLastSuffix->getErrorMessage());

    // Without a suffix the content decides: an ASCII STL is known by its first word.
    const QString bare = folder.filePath("triangle");
    {
        QFile file(bare);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("solid t\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                   "endloop\nendfacet\nendsolid t\n");
    }
    LogCapture log;
    std::unique_ptr<io::scene::Loader> byContent(importer->getFallbackLoader(bare));
    ASSERT_TRUE(byContent);
    mesh.reset(byContent->loadMesh(bare));
    ASSERT_TRUE(mesh) << qPrintable(byContent->getErrorMessage());
    EXPECT_EQ(1, mesh->cm.fn);
    EXPECT_TRUE(log.contains("'" + bare + "' has a type no plug-in registered; its content is read as", 3000));

    // Content that no reader knows is refused as such.
    const QString text = folder.filePath("notes.text");
    {
        QFile file(text);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("nothing of a model here\n");
    }
    std::unique_ptr<io::scene::Loader> unknown(importer->getFallbackLoader(text));
    ASSERT_TRUE(unknown);
    EXPECT_FALSE(unknown->loadMesh(text));
    EXPECT_TRUE(unknown->getErrorMessage().startsWith("Could not load '" + text + "': no reader knows its type"))
        << qPrintable(unknown->getErrorMessage());
}

TEST_F(ImporterTest, OnlyOneFallbackLoaderIsKeptAndNoneAfterUnloading)
{
    Importer* importer = Importer::getInstance();
    importer->unloadPlugins();
    EXPECT_FALSE(importer->getFallbackLoader("any.thing"));
    LogCapture log;
    EXPECT_TRUE(importer->registerFallbackLoader(&noLoader));
    EXPECT_FALSE(importer->registerFallbackLoader(&noLoader));
    EXPECT_EQ(1, log.count("Only one loader can read the files of unregistered types!", 2000));
    importer->unloadPlugins();
    EXPECT_TRUE(importer->registerFallbackLoader(&noLoader));
    importer->unloadPlugins();
}

TEST_F(ImporterTest, ASecondRegistrationOfAnExtensionIsRefused)
{
    Importer* importer = Importer::getInstance();
    importer->unloadPlugins();
    LogCapture log;
    EXPECT_TRUE(importer->registerLoader(&noLoader, "abc", "first"));
    EXPECT_FALSE(importer->registerLoader(&noLoader, "ABC", "second"));
    EXPECT_EQ(1, log.count(TWICE, 2000));
    EXPECT_EQ(QString("first"), importer->getLoadableFiles()->at("ABC"));
}

TEST_F(ImporterTest, SymbolicLinksAndLibrariesWithoutEntryPointAreSkipped)
{
    ASSERT_TRUE(QFile::link(plugin("stl"), folder.filePath("libqelio_link.so")));
    copy(testPlugin("noregister"), "libqelio_noregister.so");
    copy(testPlugin("refusing"), "libqelio_refusing.so");
    QFile broken(folder.filePath("libbroken.so"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("not a library");
    broken.close();

    LogCapture log;
    Importer::getInstance()->refreshPlugins(folder.path());
    EXPECT_TRUE(Importer::getInstance()->getPlugins().empty());
    EXPECT_TRUE(Importer::getInstance()->getLoadableFiles()->empty());
    EXPECT_FALSE(Importer::getInstance()->getLoader("a.stl"));
    EXPECT_EQ(1, log.count("Couldn't load io plugin: 'libbroken' - ", 2000));
}

TEST_F(ImporterTest, APluginRepeatingAnotherOnesExtensionIsRefusedAndUnloaded)
{
    copy(plugin("stl"), "libqelio_stl.so");
    copy(plugin("stl"), "libqelio_stl_copy.so");
    LogCapture log;
    Importer::getInstance()->refreshPlugins(folder.path());
    EXPECT_EQ(1, log.count(TWICE, 2000));
    ASSERT_EQ(1u, Importer::getInstance()->getPlugins().size());
    EXPECT_TRUE(Importer::getInstance()->getPlugins().front()->fileName().endsWith("libqelio_stl.so"));
    std::unique_ptr<io::scene::Loader> loader(Importer::getInstance()->getLoader("a.stl"));
    EXPECT_TRUE(loader);
}

TEST_F(ImporterTest, AMissingFolderGivesAnEmptyTable)
{
    Importer::getInstance()->refreshPlugins(folder.filePath("nothing/here"));
    EXPECT_TRUE(Importer::getInstance()->getLoadableFiles()->empty());
}

class SceneModule : public main::Module
{
public:
    explicit SceneModule(main::InformationObject* information) : main::Module(information) {}
};

class SceneModuleFactory : public main::ModuleFactory
{
public:
    SceneModuleFactory() { setInformationObject(new main::InformationObject("test", "Scene", QIcon())); }
    main::Module* createModule() override { return new SceneModule(getInformationObject()); }
};

TEST_F(ImporterTest, ThirdPartyNotesGoToTheSceneModuleAndLeaveWithThePlugins)
{
    LogCapture log;
    Importer::getInstance()->refreshPlugins(pluginFolder());
    EXPECT_TRUE(Importer::getInstance()->getPluginInfos().empty());
    EXPECT_EQ(1, log.count("Module 'Scene' was not found by the modulemanager!", 2000) > 0);

    SceneModuleFactory factory;
    ASSERT_TRUE(main::ModuleManager::getInstance()->addModule(&factory));
    std::list<main::ThirdPartyInfos*>* notes = factory.getInformationObject()->getAdditionalInformations();
    Importer::getInstance()->refreshPlugins(pluginFolder());
    ASSERT_EQ(1u, Importer::getInstance()->getPluginInfos().size());
    ASSERT_EQ(1u, notes->size());
    EXPECT_TRUE(notes->front()->name.startsWith("Open Asset Import Library"));
    Importer::getInstance()->unloadPlugins();
    EXPECT_TRUE(notes->empty());
    EXPECT_TRUE(Importer::getInstance()->getPluginInfos().empty());
    main::ModuleManager::getInstance()->unloadModules();
}

} // namespace
} // namespace test
} // namespace qel
