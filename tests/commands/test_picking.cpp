// The picking commands as command strings through the host's processor, and the scene
// tree's face selection by a selection body, with what they record in a macro.
#include "commandfixture.h"
#include "kernel/main/macrorecorder.h"
#include "kernel/main/outputconsole.h"
#include "mesh/meshfixtures.h"
#include "module_scene/commands/selectface.h"
#include "module_scene/commands/setselectionmode.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshtopology.h"
#include "module_scene/meshmodel.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/scenesphere.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"
#include "support/logcapture.h"

#include <QAction>
#include <QActionGroup>
#include <QTemporaryDir>

using qel::commands::scene::SelectFace;
using qel::commands::scene::SetSelectionMode;
using qel::scene::SceneElement;
using qel::scene::SceneSelectionPlane;
using qel::scene::SceneSphere;
using qel::scene::SceneVCGModel;
using qel::scene::SelectedPoint;
using namespace qel::test;

namespace {

typedef qel::util::ZPointer<SceneVCGModel> ModelPointer;
typedef std::vector<unsigned int> Places;

// Grids of cells in z = 0, two faces per cell, row by row: cell (x, y) of a grid holds
// faces 2 (y * columns + x) and the next. Each grid spans [x0, x0 + width] x [0, 80]; the
// grids share no vertex. With adjacency, and a box of 60 x 80 (diagonal 100) over all grids,
// so that the scene's scale stays 1.
struct GridSpec
{
    double x0;
    double width;
    int columns;
    int rows;
};

ModelPointer makeGrids(const QString& name, const std::vector<GridSpec>& grids)
{
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    for (const GridSpec& grid : grids) {
        const int first = static_cast<int>(points.size());
        for (int y = 0; y <= grid.rows; ++y) {
            for (int x = 0; x <= grid.columns; ++x)
                points.push_back(Point(grid.x0 + grid.width * x / grid.columns, 80.0 * y / grid.rows, 0.0));
        }
        auto at = [&](int x, int y) { return first + y * (grid.columns + 1) + x; };
        for (int y = 0; y < grid.rows; ++y) {
            for (int x = 0; x < grid.columns; ++x) {
                triangles.push_back({at(x, y), at(x + 1, y), at(x + 1, y + 1)});
                triangles.push_back({at(x, y), at(x + 1, y + 1), at(x, y + 1)});
            }
        }
    }
    auto* mesh = new qel::scene::MeshModel;
    qel::test::buildMesh(mesh->cm, points, triangles);
    qel::scene::MeshTopology::buildFaceFace(mesh->cm);
    qel::scene::MeshTopology::buildVertexFace(mesh->cm);
    qel::scene::MeshBounds::update(mesh->cm);
    mesh->busy = false;
    return ModelPointer(new SceneVCGModel(mesh, name));
}

Places selectedPlaces(SceneVCGModel* model)
{
    Places places;
    const qel::scene::CFaceO* first = model->getMeshModel()->cm.face.data();
    for (const qel::scene::CFaceO* face : model->getSelectedFaces())
        places.push_back(static_cast<unsigned int>(face - first));
    return places;
}

Places range(unsigned int first, unsigned int last)
{
    Places places;
    for (unsigned int place = first; place <= last; ++place)
        places.push_back(place);
    return places;
}

QString consoleText()
{
    return qel::main::Overseer::getInstance()->getOutputConsole()->getText();
}

qel::main::CommandProcessor* processor()
{
    return qel::main::Overseer::getInstance()->getCommandProcessor();
}

// A sphere in the scene around the centre; its handle sets the radius.
qel::util::ZPointer<SceneSphere> addSphere(double x, double y, double radius)
{
    qel::util::ZPointer<SceneSphere> sphere(new SceneSphere);
    CommandTest::scene()->addElement(sphere.get());
    sphere->translate(x, y, 0.0);
    sphere->getDragger()->translate(x + radius, y, 0.0);
    return sphere;
}

SelectFace* selectFace()
{
    return dynamic_cast<SelectFace*>(processor()->getCommand(SelectFace::CommandName));
}

} // namespace

TEST_F(CommandTest, PickingCommandsAreRegisteredWithTheirEntries)
{
    const struct
    {
        const char* name;
        const char* description;
        size_t sets;
        size_t entries;
    } table[] = {{"selectface", "Selects a face of a model", 2, 2},
                 {"clearselection", "Clears the face selection", 0, 1},
                 {"selectpoint", "Adds a point to the scene", 3, 1},
                 {"removeselectedpoint", "Removes a selected point", 1, 0},
                 {"selectsceneelements", "Selects the scene elements to manipulate", 2, 0},
                 {"setselectionmode", "Sets the selection mode", 1, 5}};
    for (const auto& row : table) {
        qel::main::Command* command = prototype(row.name);
        ASSERT_TRUE(command) << row.name;
        EXPECT_EQ(row.description, command->getDescriptor()->getDescription()) << row.name;
        EXPECT_EQ(row.sets, command->getParameterSets()->size()) << row.name;
        EXPECT_EQ(row.entries, command->getGUIDescriptors().size()) << row.name;
    }

    const auto faceEntries = prototype("selectface")->getGUIDescriptors();
    EXPECT_EQ(qel::main::CommandGUIDescriptor::CONTEXTMENU, faceEntries[0]->getFlag());
    EXPECT_EQ("scenetree", faceEntries[0]->getLocation());
    EXPECT_EQ(300, faceEntries[0]->getPosition());
    EXPECT_EQ("Select faces", faceEntries[0]->getNameOnGUI());
    EXPECT_EQ(301, faceEntries[1]->getPosition());
    EXPECT_EQ("Unselect faces", faceEntries[1]->getNameOnGUI());
    EXPECT_FALSE(faceEntries[1]->getGUIOpenFunction().empty());

    const auto clearEntry = prototype("clearselection")->getGUIDescriptors().front();
    EXPECT_EQ(qel::main::CommandGUIDescriptor::TOOLBAR, clearEntry->getFlag());
    EXPECT_EQ("Selection Mode", clearEntry->getLocation());
    EXPECT_EQ(QKeySequence("Ctrl+0"), clearEntry->getShortcut());

    const auto pointEntry = prototype("selectpoint")->getGUIDescriptors().front();
    EXPECT_EQ(qel::main::CommandGUIDescriptor::MAINMENU, pointEntry->getFlag());
    EXPECT_EQ(11, pointEntry->getPosition());
    EXPECT_EQ(QKeySequence("P"), pointEntry->getShortcut());
    ASSERT_EQ(1u, pointEntry->getUsedSets().size());
    EXPECT_EQ(1, pointEntry->getUsedSets().front().getID());
}

TEST_F(CommandTest, SelectFaceTogglesByIndexAndChangesListsByMode)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    scene()->addElement(grid.get());

    ASSERT_TRUE(run("selectface(grid,7)"));
    EXPECT_EQ(Places{7}, selectedPlaces(grid.get()));
    ASSERT_TRUE(run("selectface(grid,7)"));
    EXPECT_TRUE(selectedPlaces(grid.get()).empty());

    ASSERT_TRUE(run("selectface(grid,[1,2,3],1)"));
    EXPECT_EQ((Places{1, 2, 3}), selectedPlaces(grid.get()));
    ASSERT_TRUE(run("selectface(grid,[2,5],0)"));
    EXPECT_EQ((Places{1, 3, 5}), selectedPlaces(grid.get()));
    ASSERT_TRUE(run("selectface(grid,[3,4],2)"));
    EXPECT_EQ((Places{1, 5}), selectedPlaces(grid.get()));
}

TEST_F(CommandTest, SelectFaceRefusesBadInputWithTheMessageAndLeavesTheSelection)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    scene()->addElement(grid.get());
    addElement("Plain");
    ASSERT_TRUE(run("selectface(grid,[4],1)"));
    LogCapture log;

    ASSERT_TRUE(run("selectface(grid,[1,2],3)"));
    EXPECT_EQ(1, log.count("Invalid mode", 2000));
    ASSERT_TRUE(run("selectface(nosuch,[1],1)"));
    EXPECT_EQ(1, log.count("Sceneelement 'nosuch' was not found", 2000));
    ASSERT_TRUE(run("selectface(Plain,1)"));
    EXPECT_EQ(1, log.count("Sceneelement is not a model", 2000));
    // A place past the faces is reported by the model and skipped.
    ASSERT_TRUE(run("selectface(grid,[96],1)"));
    EXPECT_EQ(1, log.count("Given face isn't part of that model!", 1000));
    // A list that doesn't cast runs nothing.
    EXPECT_FALSE(run("selectface(grid,[1,x],1)"));
    EXPECT_FALSE(run("selectface(grid,[-1],1)"));
    EXPECT_GE(log.count("selectface", 1000), 2);

    EXPECT_EQ(Places{4}, selectedPlaces(grid.get()));
}

TEST_F(CommandTest, TheTreeEntrySelectsWhatASphereHoldsAndRecordsOneLinePerModel)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    const ModelPointer other = makeGrids("other", {{0.0, 10.0, 1, 1}});
    scene()->addElement(grid.get());
    scene()->addElement(other.get());
    ASSERT_EQ(1.0, scene()->getGlobalScalingFactor());
    const auto sphere = addSphere(20.0, 10.0, 5.0);
    SelectFace* command = selectFace();
    ASSERT_TRUE(command);

    // The entries are there for selection bodies only.
    scene()->setFocus(grid.get());
    EXPECT_FALSE(command->getGUIDescriptors()[0]->isQActionEnabled());
    scene()->setFocus(sphere.get());
    EXPECT_TRUE(command->getGUIDescriptors()[0]->isQActionEnabled());
    EXPECT_TRUE(command->getGUIDescriptors()[1]->isQActionEnabled());

    QTemporaryDir folder;
    qel::main::MacroRecorder* recorder = processor()->getMacroRecorder();
    ASSERT_TRUE(recorder->start(folder.filePath("macro.txt")));
    command->useSelectedElementForSelect(nullptr, nullptr);
    // Only the corner (20, 10) lies in the sphere: the six faces around it.
    EXPECT_EQ((Places{2, 3, 5, 14, 16, 17}), selectedPlaces(grid.get()));
    EXPECT_TRUE(selectedPlaces(other.get()).empty());
    EXPECT_EQ(QStringList{"selectface(grid,[2,3,5,14,16,17],1)"}, recorder->getCommands());

    command->useSelectedElementForUnselect(nullptr, nullptr);
    EXPECT_TRUE(selectedPlaces(grid.get()).empty());
    EXPECT_EQ("selectface(grid,[2,3,5,14,16,17],2)", recorder->getCommands().last());
    recorder->stop();

    // The plane takes its side of all models below its parent.
    qel::util::ZPointer<SceneSelectionPlane> plane(new SceneSelectionPlane("SelectionPlane"));
    scene()->addElement(plane.get());
    plane->setPlaneBase(SceneElement::Vector4(0.0, 75.0, 0.0, 1.0));
    plane->setPlaneNormal(SceneElement::Vector4(0.0, 1.0, 0.0, 0.0));
    scene()->setFocus(plane.get());
    command->useSelectedElementForSelect(nullptr, nullptr);
    EXPECT_EQ(range(84, 95), selectedPlaces(grid.get()));
    EXPECT_EQ((Places{0, 1}), selectedPlaces(other.get()));
}

TEST_F(CommandTest, TheTreeEntryKeepsOnlyThePatchesAroundSelectedPoints)
{
    // Two grids in one model, apart: cells of 10 x 10, 3 columns each, 8 rows.
    const ModelPointer model = makeGrids("patches", {{0.0, 30.0, 3, 8}, {40.0, 20.0, 2, 8}});
    scene()->addElement(model.get());
    const auto sphere = addSphere(35.0, 40.0, 16.0);
    scene()->setFocus(sphere.get());
    SelectFace* command = selectFace();

    command->useSelectedElementForSelect(nullptr, nullptr);
    const Places everything = selectedPlaces(model.get());
    ASSERT_FALSE(everything.empty());
    const unsigned int secondGrid = 2 * 3 * 8;
    EXPECT_LT(everything.front(), secondGrid);
    EXPECT_GE(everything.back(), secondGrid);
    ASSERT_TRUE(run("clearselection"));

    // A point on the second grid, on a face inside the sphere (cell (0, 4)): that grid's
    // part only.
    const unsigned int seed = secondGrid + 2 * (4 * 2 + 0);
    ASSERT_TRUE(run(QString("selectpoint(patches,[45,45,0],%1)").arg(seed)));
    QTemporaryDir folder;
    qel::main::MacroRecorder* recorder = processor()->getMacroRecorder();
    ASSERT_TRUE(recorder->start(folder.filePath("macro.txt")));
    command->useSelectedElementForSelect(nullptr, nullptr);
    Places patch;
    for (unsigned int place : everything) {
        if (place >= secondGrid)
            patch.push_back(place);
    }
    EXPECT_EQ(patch, selectedPlaces(model.get()));
    ASSERT_EQ(1, recorder->getCommands().size());

    // A second point in the same patch repeats it in the command; one whose face is no
    // candidate, one on a model without candidates and one past the faces add nothing.
    ASSERT_TRUE(run("clearselection"));
    ASSERT_TRUE(run(QString("selectpoint(patches,[45,45,0],%1)").arg(seed + 1)));
    ASSERT_TRUE(run("selectpoint(patches,[55,75,0],79)"));
    const ModelPointer far = makeGrids("far", {{0.0, 10.0, 1, 1}});
    scene()->addElement(far.get());
    ASSERT_TRUE(run("selectpoint(far,[1,1,0],0)"));
    LogCapture log;
    ASSERT_TRUE(run("selectpoint(patches,[45,45,0],4000)"));
    command->useSelectedElementForSelect(nullptr, nullptr);
    EXPECT_EQ(1, log.count("Index of face overflows size.", 2000));
    EXPECT_EQ(patch, selectedPlaces(model.get()));
    EXPECT_TRUE(selectedPlaces(far.get()).empty());
    const QString last = recorder->getCommands().last();
    EXPECT_EQ(2 * patch.size() - 1, static_cast<size_t>(last.count(',')) - 2) << last.toStdString();
    recorder->stop();

    // Without a face index the point's face is found by a ray towards the model's origin; a
    // ray along the surface finds none.
    ASSERT_TRUE(run("clearselection"));
    scene()->clearSelectedPoints();
    ASSERT_TRUE(run("selectpoint(patches,58,40,0)"));
    command->useSelectedElementForSelect(nullptr, nullptr);
    EXPECT_EQ(1, log.count("Could not find intersecting face.", 2000));
    EXPECT_TRUE(selectedPlaces(model.get()).empty());
}

TEST_F(CommandTest, AFloodFillOverAHugePatchRunsWithoutRecursion)
{
    const ModelPointer model = makeGrids("huge", {{0.0, 60.0, 300, 300}});
    scene()->addElement(model.get());
    const auto sphere = addSphere(30.0, 40.0, 1000.0);
    scene()->setFocus(sphere.get());
    ASSERT_TRUE(run("selectpoint(huge,[0,0,0],0)"));
    selectFace()->useSelectedElementForSelect(nullptr, nullptr);
    EXPECT_EQ(model->getMeshModel()->cm.face.size(), model->getSelectedFaces().size());
}

TEST_F(CommandTest, ABoundingBoxCannotSelectYet)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    scene()->addElement(grid.get());
    auto box = addElement("box");
    qel::util::ZPointer<qel::test::TestElement> typed(new qel::test::TestElement("BoundingBox", "BoundingBox"));
    scene()->addElement(typed.get());
    scene()->setFocus(typed.get());
    EXPECT_TRUE(selectFace()->getGUIDescriptors()[0]->isQActionEnabled());
    LogCapture log;
    QTemporaryDir folder;
    ASSERT_TRUE(processor()->getMacroRecorder()->start(folder.filePath("macro.txt")));
    selectFace()->useSelectedElementForSelect(nullptr, nullptr);
    EXPECT_EQ(1, log.count("BoundingBox selection is not (yet) available!", 2000));
    EXPECT_TRUE(processor()->getMacroRecorder()->getCommands().isEmpty());
    processor()->getMacroRecorder()->stop();
    EXPECT_TRUE(selectedPlaces(grid.get()).empty());
    scene()->setFocus(box.get());
    EXPECT_FALSE(selectFace()->getGUIDescriptors()[0]->isQActionEnabled());
}

TEST_F(CommandTest, ClearSelectionEmptiesEveryModelAndTellsTheScene)
{
    struct Counter : qel::util::ZObserver
    {
        int calls = 0;
        void update(void*, void*) override { ++calls; }
    } counter;
    scene()->attachObserver(&counter);
    ASSERT_TRUE(run("clearselection"));
    EXPECT_EQ(1, counter.calls);

    const ModelPointer a = makeGrids("a", {{0.0, 60.0, 6, 8}});
    const ModelPointer b = makeGrids("b", {{0.0, 10.0, 1, 1}});
    scene()->addElement(a.get());
    scene()->addElement(b.get());
    ASSERT_TRUE(run("selectface(a,[1,2],1)"));
    ASSERT_TRUE(run("selectface(b,[0],1)"));
    ASSERT_TRUE(run("selectpoint(a,1,1,0)"));
    ASSERT_TRUE(run("selectsceneelements([b])"));
    counter.calls = 0;
    ASSERT_TRUE(run("clearselection"));
    EXPECT_TRUE(selectedPlaces(a.get()).empty());
    EXPECT_TRUE(selectedPlaces(b.get()).empty());
    EXPECT_EQ(1u, scene()->getSelectedPoints()->size());
    EXPECT_EQ(b.get(), scene()->getFocusedNode().get());
    EXPECT_GE(counter.calls, 1);
    scene()->detachObserver(&counter);
}

TEST_F(CommandTest, SelectPointTakesThreeFormsAndRefusesBadInput)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    scene()->addElement(grid.get());
    addElement("Plain");
    qel::scene::Scene::PointList* points = scene()->getSelectedPoints();

    ASSERT_TRUE(run("selectpoint(grid,1,2,3)"));
    ASSERT_TRUE(run("selectpoint(grid,[4,5,6],7)"));
    ASSERT_EQ(2u, points->size());
    EXPECT_EQ(grid.get(), points->front()->getElement());
    EXPECT_EQ(SelectedPoint::NoFace, points->front()->getAssociatedFaceIndex());
    EXPECT_EQ(SelectedPoint::Vector3(1.0, 2.0, 3.0), points->front()->getPoint());
    EXPECT_EQ(7u, points->back()->getAssociatedFaceIndex());
    EXPECT_EQ(SelectedPoint::Vector3(4.0, 5.0, 6.0), points->back()->getPoint());

    // The GUI's form works on the first selected element, in shown units.
    LogCapture log;
    ASSERT_TRUE(run("selectpoint(1,2,3)"));
    EXPECT_EQ(1, log.count("Please select an model", 2000));
    ASSERT_TRUE(run("selectsceneelements([grid])"));
    ASSERT_TRUE(run("measure(2)"));
    ASSERT_TRUE(run("selectpoint(1,2,3)"));
    ASSERT_EQ(3u, points->size());
    EXPECT_EQ(SelectedPoint::Vector3(0.5, 1.0, 1.5), points->back()->getPoint());

    ASSERT_TRUE(run("selectpoint(nosuch,1,2,3)"));
    EXPECT_EQ(1, log.count("Sceneelement 'nosuch' not found", 2000));
    ASSERT_TRUE(run("selectpoint(Plain,[1,2,3],0)"));
    EXPECT_EQ(1, log.count("Sceneelement is not a model", 4000));
    ASSERT_TRUE(run("selectpoint(grid,[1,2],0)"));
    EXPECT_EQ(1, log.count("Invalid array", 2000));
    EXPECT_EQ(3u, points->size());

    // The menu entry is there for a focused model.
    const auto entry = prototype("selectpoint")->getGUIDescriptors().front();
    scene()->setFocus(scene()->getSceneElement("Plain").get());
    EXPECT_FALSE(entry->isQActionEnabled());
    scene()->setFocus(grid.get());
    EXPECT_TRUE(entry->isQActionEnabled());
}

TEST_F(CommandTest, RemoveSelectedPointTakesOneOutAndReportsAnIndexPastTheEnd)
{
    const ModelPointer grid = makeGrids("grid", {{0.0, 60.0, 6, 8}});
    scene()->addElement(grid.get());
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(run(QString("selectpoint(grid,%1,0,0)").arg(i)));
    ASSERT_TRUE(run("removeselectedpoint(1)"));
    qel::scene::Scene::PointList* points = scene()->getSelectedPoints();
    ASSERT_EQ(3u, points->size());
    EXPECT_EQ(0.0, points->front()->getPoint().x());
    EXPECT_EQ(2.0, (*std::next(points->begin()))->getPoint().x());

    LogCapture log;
    ASSERT_TRUE(run("removeselectedpoint(3)"));
    ASSERT_TRUE(run("removeselectedpoint(-1)"));
    EXPECT_EQ(2, log.count("The index must be between 0 and 3", 4000));
    EXPECT_EQ(3u, points->size());
}

TEST_F(CommandTest, SelectSceneElementsSelectsWhatItFindsAndNothingWithoutNames)
{
    auto a = addElement("a");
    auto b = addElement("b");
    LogCapture log;
    ASSERT_TRUE(run("selectsceneelements([a,nosuch])"));
    EXPECT_EQ(1, log.count("Sceneelement 'nosuch' to select does not exists", 2000));
    EXPECT_EQ(qel::scene::Scene::ElementList{a}, scene()->getSelectedElements());
    EXPECT_EQ(a.get(), scene()->getFocusedNode().get());

    ASSERT_TRUE(run("selectsceneelements([a,b])"));
    EXPECT_EQ((qel::scene::Scene::ElementList{a, b}), scene()->getSelectedElements());
    EXPECT_EQ(scene()->getSelectionNode().get(), scene()->getFocusedNode().get());

    ASSERT_TRUE(run("selectsceneelements()"));
    EXPECT_TRUE(scene()->getSelectedElements().empty());
    EXPECT_TRUE(scene()->getFocusedNode().isNull());
}

TEST_F(CommandTest, SetSelectionModeSwitchesTheScenesPickingWithTheKindsCrossed)
{
    const struct
    {
        const char* command;
        const char* pick;
        qel::scene::Scene::SELECTIONCOMMANDTYPE type;
    } modes[] = {{"setselectionmode(1)", "selectsceneelements", qel::scene::Scene::SELECT_ELEMENTS},
                 {"setselectionmode(2)", "selectface", qel::scene::Scene::SELECT_FACES},
                 {"setselectionmode(3)", "selectpoint", qel::scene::Scene::SELECT_POINTS_FREE},
                 {"setselectionmode(4)", "selectpoint", qel::scene::Scene::SELECT_POINTS},
                 {"setselectionmode(0)", "", qel::scene::Scene::SELECT_NOTHING}};
    for (const auto& mode : modes) {
        ASSERT_TRUE(run(mode.command));
        EXPECT_EQ(mode.pick, scene()->getCurrentSelectionCommand()) << mode.command;
        EXPECT_EQ(mode.type, scene()->getCurrentSelectionType()) << mode.command;
    }

    ASSERT_TRUE(run("setselectionmode(2)"));
    const int reports = consoleText().count("Invalid mode specified");
    ASSERT_TRUE(run("setselectionmode(5)"));
    EXPECT_EQ(reports + 1, consoleText().count("Invalid mode specified"));
    EXPECT_EQ(qel::scene::Scene::SELECT_FACES, scene()->getCurrentSelectionType());

    // The actions: one exclusive group, "Select none" checked at start; each runs its mode.
    auto* command = dynamic_cast<SetSelectionMode*>(prototype("setselectionmode"));
    ASSERT_TRUE(command);
    const auto entries = command->getGUIDescriptors();
    const char* const texts[] = {"Select none", "Select model", "(Un-)Select face", "Select point",
                                 "Select nearest vertex"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(texts[i], entries[static_cast<size_t>(i)]->getNameOnGUI());
        EXPECT_EQ(i, entries[static_cast<size_t>(i)]->getPosition());
        EXPECT_EQ(QKeySequence(QString("Ctrl+%1").arg(i + 1)), entries[static_cast<size_t>(i)]->getShortcut());
        EXPECT_TRUE(entries[static_cast<size_t>(i)]->getQAction()->isCheckable());
        EXPECT_EQ(command->getActionGroup(), entries[static_cast<size_t>(i)]->getQAction()->actionGroup());
    }
    EXPECT_TRUE(command->getActionGroup()->isExclusive());
    entries[3]->getGUIOpenFunction()(entries[3]->getQAction(), entries[3]);
    EXPECT_EQ(qel::scene::Scene::SELECT_POINTS_FREE, scene()->getCurrentSelectionType());
    entries[4]->getGUIOpenFunction()(entries[4]->getQAction(), entries[4]);
    EXPECT_EQ(qel::scene::Scene::SELECT_POINTS, scene()->getCurrentSelectionType());
    entries[0]->getGUIOpenFunction()(entries[0]->getQAction(), entries[0]);
    EXPECT_EQ(qel::scene::Scene::SELECT_NOTHING, scene()->getCurrentSelectionType());

    // Other panels' picking actions join the group (and stay registered: the group keeps it).
    auto* own = new QAction("own", command->getActionGroup());
    own->setCheckable(true);
    SetSelectionMode::registerActionForGroup(own);
    EXPECT_EQ(command->getActionGroup(), own->actionGroup());
}
