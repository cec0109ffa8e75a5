// loadmodel through the command processor with a loader of the test's own ("*.qelbox": a
// text file of two box corners): names, placement clear of other models or in place, the
// rescale of what is there, failures, progress, abort, the lock and the file dialog.
#include "commandfixture.h"
#include "kernel/main/qstringvectorcastclass.h"
#include "mesh/meshfixtures.h"
#include "module_scene/commands/loadmodel.h"
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenevcgmodel.h"
#include "support/logcapture.h"

#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace qel {
namespace test {
namespace {

using commands::scene::LoadModel;
using scene::SceneVCGModel;
typedef LoadModel::Box Box;
typedef SceneVCGModel::Point Point3;

const QString BoxExtension = QStringLiteral("qelbox");

// Reads "x0 y0 z0 x1 y1 z1" into a closed box; reports reading progress and polls the abort
// flag after it, as plug-ins do.
class BoxLoader : public io::scene::Loader
{
public:
    static io::scene::Loader* create() { return new BoxLoader; }

    bool checkFile(QString) override { return true; }

protected:
    bool loadMeshFile() override
    {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly))
            return fail(QStringLiteral("cannot open the file"));
        const QList<QByteArray> words = file.readAll().simplified().split(' ');
        emit progressChanged(10, QStringLiteral("Reading file"));
        emit progressChanged(50, QStringLiteral("Reading file"));
        if (aborted)
            return fail(QStringLiteral("loading was aborted"));
        if (words.size() != 6)
            return fail(QStringLiteral("not a box"));
        mesh = new scene::MeshModel;
        buildCube(mesh->cm);
        for (scene::CVertexO& vertex : mesh->cm.vert) {
            for (int axis = 0; axis < 3; ++axis) {
                const double low = words[axis].toDouble();
                vertex.coord[axis] = low + vertex.coord[axis] * (words[axis + 3].toDouble() - low);
            }
        }
        mesh->cm.face.enableFaceFace();
        mesh->cm.face.enableVertexFace();
        processMesh(0);
        mesh->busy = false;
        return true;
    }
};

// Records the distinct values and texts that reach the host's progress display while it lives.
class ProgressRecorder
{
public:
    ProgressRecorder()
    {
        main::Command::setProgressSink([this](const main::Command* command, int processed, const QString& text) {
            if (values.empty() || values.back() != processed)
                values.push_back(processed);
            if (!text.isEmpty() && (texts.isEmpty() || texts.last() != text))
                texts << text;
            if (onProgress)
                onProgress(const_cast<main::Command*>(command), processed);
        });
    }
    ~ProgressRecorder() { main::Command::setProgressSink(main::Command::ProgressSink()); }

    std::vector<int> values;
    QStringList texts;
    std::function<void(main::Command*, int)> onProgress;
};

class LoadModelTest : public CommandTest
{
protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        io::scene::Importer* importer = io::scene::Importer::getInstance();
        if (!importer->getLoadableFiles()->count(BoxExtension.toUpper()))
            importer->registerLoader(&BoxLoader::create, BoxExtension, "Test boxes");
        ASSERT_TRUE(folder.isValid());
    }

    // Removing the models one by one announces the scale going back to 1, which cleaning the
    // scene doesn't; the elements that stay keep the factor of the last model, so it is reset
    // here: commands and elements that follow the scale would otherwise keep this test's.
    void TearDown() override
    {
        for (const scene::SceneElement::Pointer& model : scene()->getSceneElementsOfType(SceneVCGModel::TypeName))
            scene()->removeElement(model.get());
        for (const scene::SceneElement::Pointer& element : *scene()->getElementList())
            element->setScalingFactor(1.0);
        CommandTest::TearDown();
    }

    QString writeFile(const QString& name, const QByteArray& contents)
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return path;
    }

    QString writeBox(const QString& baseName, double x0, double y0, double z0, double x1, double y1, double z1)
    {
        const QString text = QStringLiteral("%1 %2 %3 %4 %5 %6").arg(x0).arg(y0).arg(z0).arg(x1).arg(y1).arg(z1);
        return writeFile(baseName + "." + BoxExtension, text.toLatin1());
    }

    static SceneVCGModel* model(const QString& name)
    {
        scene::SceneElement* element = scene()->getSceneElement(name).get();
        EXPECT_TRUE(element) << "no element " << name.toStdString();
        EXPECT_TRUE(!element || element->getTypeName() == SceneVCGModel::TypeName);
        return static_cast<SceneVCGModel*>(element);
    }

    static std::size_t modelCount() { return scene()->getSceneElementsOfType(SceneVCGModel::TypeName).size(); }

    static scene::SceneElement::Vector4 translationOf(const scene::SceneElement* element)
    {
        return element->getTransformMatrix().getColumn(3);
    }

    QTemporaryDir folder;
};

// Error and warning lines (level 2000 or below) that name the file.
int errorLinesNaming(const LogCapture& log, const QString& file)
{
    int found = 0;
    for (const log::LogRecord& record : log.records())
        found += record.level <= 2000u && record.text.contains("'" + file + "'") ? 1 : 0;
    return found;
}

Box cube(double x, double y, double z, double sizeX, double sizeY, double sizeZ)
{
    return Box(Box::Vector4(x, y, z, 1.0), Box::Vector4(sizeX, sizeY, sizeZ, 0.0));
}

} // namespace

TEST_F(LoadModelTest, LoadsUnderTheGivenNameCentredWithItsFormerCentreKept)
{
    LogCapture log;
    ASSERT_TRUE(run("loadmodel(" + writeBox("first", 0, 0, 0, 10, 20, 30) + ",Scan)"));
    SceneVCGModel* scan = model("Scan");
    ASSERT_TRUE(scan);
    EXPECT_EQ(Point3(5.0, 10.0, 15.0), scan->getPreSetCenter());
    EXPECT_EQ(8, scan->getMeshModel()->cm.vn);
    EXPECT_FALSE(scan->getMeshModel()->busy);
    // The first model of a scene stays at the origin, at the scale that makes it 100 across.
    EXPECT_EQ(scene::SceneElement::Vector4(0.0, 0.0, 0.0, 1.0), translationOf(scan));
    EXPECT_DOUBLE_EQ(100.0 / std::sqrt(1400.0), scene()->getGlobalScalingFactor());
    EXPECT_EQ(scene()->getGlobalScalingFactor(), scan->getScalingFactor());
    EXPECT_TRUE(log.contains("Moving to center (5, 10, 15)", 4000));
    // Scene windows are opened by viewscene when it exists; a missing one goes unmentioned.
    EXPECT_FALSE(log.contains("viewscene"));

    // Without a name the file's base name is used.
    ASSERT_TRUE(run("loadmodel(" + writeBox("second", 0, 0, 0, 1, 1, 1) + ",0,inplace)"));
    EXPECT_TRUE(model("second"));
}

TEST_F(LoadModelTest, InPlaceStandsWhereTheFileHadItAtTheSceneScale)
{
    ASSERT_TRUE(run("loadmodel(" + writeBox("placed", 10, 20, 30, 12, 24, 36) + ",1,inplace)"));
    SceneVCGModel* placed = model("placed");
    ASSERT_TRUE(placed);
    const double scale = scene()->getGlobalScalingFactor();
    EXPECT_EQ(scene::SceneElement::Vector4(11.0 * scale, 22.0 * scale, 33.0 * scale, 1.0), translationOf(placed));

    // In place, a second model may overlap the first.
    ASSERT_TRUE(run("loadmodel(" + writeBox("again", 10, 20, 30, 12, 24, 36) + ",1,inplace)"));
    EXPECT_EQ(translationOf(placed), translationOf(model("again")));
}

TEST_F(LoadModelTest, LaterModelsAreMovedAlongZClearOfTheOthers)
{
    const QString path = writeBox("cube", 0, 0, 0, 10, 10, 10);
    ASSERT_TRUE(run("loadmodel(" + path + ",a)"));
    ASSERT_TRUE(run("loadmodel(" + path + ",0,inplace)"));
    ASSERT_TRUE(run("loadmodel(" + path + ",c)"));
    const double scale = scene()->getGlobalScalingFactor();
    const double depth = 10.0 * scale;
    const double step = (depth + depth) * 0.5 + 5.0;
    EXPECT_EQ(scene::SceneElement::Vector4(0.0, 0.0, step, 1.0), translationOf(model("cube")));
    // The third overlaps the first, then, pushed by one step, the second.
    EXPECT_EQ(scene::SceneElement::Vector4(0.0, 0.0, step + step, 1.0), translationOf(model("c")));
}

TEST_F(LoadModelTest, ANewScaleMovesTheElementsAlreadyThereByTheRatio)
{
    util::ZPointer<TestElement> marker = addElement("marker");
    marker->m_isOriginChangeable = true;
    marker->setTransformMatrix(Matrix4::translation(10.0, 20.0, 30.0));
    marker->setOrigin(Matrix4::translation(1.0, 2.0, 4.0));
    ASSERT_EQ(1.0, scene()->getGlobalScalingFactor());

    ASSERT_TRUE(run("loadmodel(" + writeBox("large", 0, 0, 0, 18, 24, 40) + ",large)"));
    const double ratio = 2.0;
    ASSERT_EQ(ratio, scene()->getGlobalScalingFactor());
    EXPECT_EQ(scene::SceneElement::Vector4(20.0, 40.0, 60.0, 1.0), translationOf(marker.get()));
    EXPECT_EQ(scene::SceneElement::Vector4(2.0, 4.0, 8.0, 1.0), marker->getOrigin().getColumn(3));
}

TEST_F(LoadModelTest, BadFilesAreReportedAndLeaveTheSceneAsItWas)
{
    ASSERT_TRUE(run("loadmodel(" + writeBox("kept", 0, 0, 0, 1, 1, 1) + ",kept)"));
    const std::size_t elements = scene()->getElementList()->size();
    const double scale = scene()->getGlobalScalingFactor();
    LogCapture log;

    // The command ran: a failed file is its own message, not a failure of the string, and
    // one line says it all, naming the file and the reason.
    const QString broken = writeFile("broken." + BoxExtension, "1 2 3");
    EXPECT_TRUE(run("loadmodel(" + broken + ",x)"));
    EXPECT_EQ(1, errorLinesNaming(log, broken));
    EXPECT_TRUE(log.contains("Could not load '" + broken + "': not a box", 1000));
    const QString missing = folder.filePath("missing." + BoxExtension);
    EXPECT_TRUE(run("loadmodel(" + missing + ",0,inplace)"));
    EXPECT_EQ(1, errorLinesNaming(log, missing));
    EXPECT_TRUE(log.contains("Could not load '" + missing + "': cannot open the file", 1000));

    // No reader for the type, neither by suffix nor by content: refused, never in silence.
    for (const char* name : {"notes.unknowntype", "notes"}) {
        log.clear();
        const QString unknown = writeFile(name, "1 2 3 4 5 6");
        EXPECT_TRUE(run("loadmodel(" + unknown + ",x)"));
        EXPECT_EQ(1, errorLinesNaming(log, unknown)) << name;
        EXPECT_TRUE(log.contains("no reader knows its type")) << name;
    }

    // The list form reads an in-place flag it doesn't have and ends before loading.
    log.clear();
    const QString good = writeBox("good", 0, 0, 0, 1, 1, 1);
    EXPECT_FALSE(run("loadmodel([" + good + "," + good + "])"));
    EXPECT_TRUE(log.contains("invalid deque<T> subscript"));

    EXPECT_EQ(elements, scene()->getElementList()->size());
    EXPECT_EQ(1u, modelCount());
    EXPECT_EQ(scale, scene()->getGlobalScalingFactor());
}

TEST_F(LoadModelTest, AFileNamedWithSeveralDotsIsReadByItsLastSuffix)
{
    LogCapture log;
    const QString versioned = writeBox("scan.v2", 0, 0, 0, 1, 1, 1);
    ASSERT_TRUE(run("loadmodel(" + versioned + ",Versioned)"));
    EXPECT_EQ(0, errorLinesNaming(log, versioned));
    EXPECT_EQ(1u, modelCount());
    EXPECT_TRUE(scene()->getSceneElement("Versioned"));
}

TEST_F(LoadModelTest, MenuEntriesShowTheFileOpenIcon)
{
    const std::vector<main::CommandGUIDescriptor*> entries = prototype(LoadModel::CommandName)->getGUIDescriptors();
    ASSERT_EQ(2u, entries.size());
    for (main::CommandGUIDescriptor* entry : entries) {
        ASSERT_NE(nullptr, entry->getIcon());
        EXPECT_FALSE(entry->getIcon()->pixmap(16, 16).isNull());
    }
    EXPECT_TRUE(QFile::exists(":/image/fileopen.png"));
}

TEST_F(LoadModelTest, ProgressReachesTheHostAndAbortReachesThePlugin)
{
    const QString path = writeBox("progress", 0, 0, 0, 1, 2, 3);
    {
        ProgressRecorder progress;
        ASSERT_TRUE(run("loadmodel(" + path + ",p)"));
        const std::vector<int> expected = {10, 50, 80, 83, 84, 85, 90, 93, 95, 97, 100};
        EXPECT_EQ(expected, progress.values);
        EXPECT_EQ(QStringList({"Reading file", "Cleaning Mesh", "Removing deleted vertices", "Removing deleted faces",
                               "Updating Normals", "Updating Bounding Box", "Updating Topology", "Moving to center",
                               "Moving Bounding Box", "Init. and uploading to graphics"}),
                  progress.texts);
    }

    LogCapture log;
    // Aborted while the plug-in reads: the abort reaches it at once, it gives up.
    {
        ProgressRecorder progress;
        progress.onProgress = [](main::Command* command, int processed) {
            if (processed == 10)
                command->abort();
        };
        EXPECT_TRUE(run("loadmodel(" + path + ",q)"));
    }
    EXPECT_TRUE(log.contains("Could not load '" + path + "': loading was aborted", 2000));
    EXPECT_EQ(1, errorLinesNaming(log, path));

    // Aborted before it runs: the loader starts aborted.
    log.clear();
    std::unique_ptr<main::Command> command(prototype(LoadModel::CommandName)->clone());
    ASSERT_TRUE(command->setParameters({path, "1", "inplace"}));
    command->abort();
    command->execute();
    EXPECT_TRUE(log.contains("loading was aborted", 2000));
    EXPECT_EQ(1u, modelCount());
}

TEST_F(LoadModelTest, IsDisabledWhileTheSceneStructureIsLocked)
{
    const QString path = writeBox("locked", 0, 0, 0, 1, 1, 1);
    scene()->structureLock();
    EXPECT_TRUE(prototype(LoadModel::CommandName)->isDisabled());
    {
        // Disabling is for the menu: the string runs, and the command refuses to load.
        LogCapture log;
        EXPECT_TRUE(run("loadmodel(" + path + ",x)"));
        EXPECT_TRUE(log.contains("structure is locked", 2000));
        EXPECT_EQ(0u, modelCount());
    }
    scene()->structureUnlock();
    EXPECT_FALSE(prototype(LoadModel::CommandName)->isDisabled());
    EXPECT_TRUE(run("loadmodel(" + path + ",x)"));
    EXPECT_EQ(1u, modelCount());
}

TEST_F(LoadModelTest, DialogOffersEveryKnownTypeTheInPlaceBoxAndTheLastFolder)
{
    main::Overseer::getInstance()->getQSettings()->setValue("settings/modeldirectory", folder.path());
    const std::unique_ptr<QFileDialog> dialog(LoadModel::createDialog());

    QStringList patterns;
    QStringList filters;
    for (const auto& entry : *io::scene::Importer::getInstance()->getLoadableFiles()) {
        patterns << "*." + entry.first.toLower();
        filters << entry.second + " (*." + entry.first.toLower() + ")";
    }
    filters.prepend("All known types (" + patterns.join(' ') + ")");
    EXPECT_EQ(filters, dialog->nameFilters());
    EXPECT_TRUE(dialog->nameFilters().contains("Test boxes (*.qelbox)"));
    EXPECT_EQ(QFileDialog::ExistingFiles, dialog->fileMode());
    EXPECT_TRUE(dialog->testOption(QFileDialog::DontUseNativeDialog));
    EXPECT_EQ(QDir(folder.path()).absolutePath(), dialog->directory().absolutePath());

    auto* inPlace = qobject_cast<QCheckBox*>(dialog->property("in-place-widget").value<QObject*>());
    ASSERT_TRUE(inPlace);
    EXPECT_EQ("Load in-place", inPlace->text());
    EXPECT_EQ("If checked the model won't be repositioned.", inPlace->toolTip());
    EXPECT_FALSE(inPlace->isChecked());
    main::Overseer::getInstance()->getQSettings()->remove("settings/modeldirectory");
}

TEST(LoadModelPlacement, BoxesThatTouchOverlapAndTheFirstAxisPairsWithTheXExtent)
{
    EXPECT_TRUE(LoadModel::boxesOverlap(cube(0, 0, 0, 10, 10, 10), cube(0, 0, 10, 10, 10, 10)));
    EXPECT_FALSE(LoadModel::boxesOverlap(cube(0, 0, 0, 10, 10, 10), cube(0, 0, 10.001, 10, 10, 10)));
    EXPECT_FALSE(LoadModel::boxesOverlap(cube(0, 0, 0, 10, 10, 10), cube(0, -10.5, 0, 10, 10, 10)));
    EXPECT_TRUE(LoadModel::boxesOverlap(cube(0, 0, 0, 1, 1, 1), cube(0.5, 0.5, 0.5, 1, 1, 1)));

    // The z axis is judged with the x extent and the x axis with the z extent: a long flat
    // box seems to reach far up, and not far to its sides.
    EXPECT_TRUE(LoadModel::boxesOverlap(cube(0, 0, 0, 10, 1, 1), cube(0, 0, 3, 1, 1, 1)));
    EXPECT_FALSE(LoadModel::boxesOverlap(cube(0, 0, 0, 10, 1, 1), cube(3, 0, 0, 1, 1, 1)));
}

} // namespace test
} // namespace qel
