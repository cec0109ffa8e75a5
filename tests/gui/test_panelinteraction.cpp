// Mouse and keys on the scene panel: picks send command strings, Shift moves the focused
// element and commits the move as one command, the recorded macro replays it.
#include "app/hostprocess.h"
#include "commands/commandfixture.h"
#include "cubemodel.h"
#include "kernel/main/macrorecorder.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/mesh/cfaceo.h"
#include "module_scene/meshmodel.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>

using qel::gui::ScenePanel;
using qel::scene::Scene;
using qel::scene::SceneVCGModel;
using qel::util::ZPointer;

namespace {

typedef qel::test::Matrix4 Matrix4;

// The global scene (the commands work on it) shown in one panel, with a macro recording.
class PanelInteractionTest : public qel::test::CommandTest
{
protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        ASSERT_TRUE(directory.isValid());
        recorder()->start(directory.filePath("macro.txt"));
        processor()->setMessageSink([this](const QString& message) { messages << message; });
    }

    void TearDown() override
    {
        recorder()->stop();
        processor()->setMessageSink(qel::main::CommandProcessor::MessageSink());
        panel.reset();
        CommandTest::TearDown();
    }

    static qel::main::CommandProcessor* processor()
    {
        return qel::main::Overseer::getInstance()->getCommandProcessor();
    }
    static qel::main::MacroRecorder* recorder() { return processor()->getMacroRecorder(); }

    ZPointer<SceneVCGModel> addCube(const QString& name)
    {
        ZPointer<SceneVCGModel> cube(qel::test::makeCubeModel(name, QColor(0, 0, 255)));
        scene()->addElement(cube.get());
        return cube;
    }

    ScenePanel* showPanel()
    {
        panel.reset(new ScenePanel(scene()));
        panel->resize(200, 200);
        panel->show();
        panel->grabFramebuffer();
        return panel.get();
    }

    void selectMode(const QString& command, Scene::SELECTIONCOMMANDTYPE type)
    {
        scene()->switchSelectionMode(scene()->registerSelectionMode(command, type));
    }

    void send(QEvent* event) { QCoreApplication::sendEvent(panel.get(), event); }

    void mouse(QEvent::Type type, const QPoint& at, Qt::MouseButton button, Qt::MouseButtons held,
               Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        QMouseEvent event(type, at, panel->mapToGlobal(at), button, held, keys);
        send(&event);
    }

    void click(const QPoint& at)
    {
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    }

    // A middle-button drag with Shift, then the Shift release.
    void shiftDrag(const QPoint& from, const QPoint& to)
    {
        mouse(QEvent::MouseButtonPress, from, Qt::MiddleButton, Qt::MiddleButton, Qt::ShiftModifier);
        mouse(QEvent::MouseMove, to, Qt::NoButton, Qt::MiddleButton, Qt::ShiftModifier);
        mouse(QEvent::MouseButtonRelease, to, Qt::MiddleButton, Qt::NoButton, Qt::ShiftModifier);
        releaseShift();
    }

    void releaseShift()
    {
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Shift, Qt::NoModifier);
        send(&release);
    }

    void wheel(const QPoint& angle, const QPoint& pixels = QPoint(), Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        const QPointF at(100.0, 100.0);
        QWheelEvent event(at, panel->mapToGlobal(QPoint(100, 100)), pixels, angle, Qt::NoButton, keys,
                          Qt::NoScrollPhase, false);
        send(&event);
    }

    QStringList recorded() const { return recorder()->getCommands(); }

    QStringList messages;
    QTemporaryDir directory;
    std::unique_ptr<ScenePanel> panel;
};

} // namespace

// Off the exact centre, which lies on the diagonal shared by two triangles.
TEST_F(PanelInteractionTest, AClickNearTheCentrePicksTheFrontFaceOfTheModel)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    showPanel();
    selectMode("selectface", Scene::SELECT_FACES);

    click(QPoint(103, 95));

    ASSERT_EQ(1, recorded().size()) << messages.join(" | ").toStdString();
    const QRegularExpressionMatch match =
        QRegularExpression("^selectface\\(cube,(\\d+)\\)$").match(recorded().first());
    ASSERT_TRUE(match.hasMatch()) << recorded().first().toStdString();
    const int face = match.captured(1).toInt();
    ASSERT_LT(face, static_cast<int>(cube->getMeshModel()->cm.face.size()));
    EXPECT_NEAR(1.0, cube->getMeshModel()->cm.face[face].normal[2], 1e-9) << "the face towards the eye";
}

TEST_F(PanelInteractionTest, OnlyAStillLeftClickOnSomethingSendsACommand)
{
    addCube("cube");
    showPanel();
    selectMode("selectface", Scene::SELECT_FACES);

    click(QPoint(3, 3));
    EXPECT_TRUE(recorded().isEmpty()) << "empty space";

    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, QPoint(101, 100), Qt::LeftButton, Qt::NoButton);
    EXPECT_TRUE(recorded().isEmpty()) << "a pixel of movement";

    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::RightButton, Qt::RightButton);
    mouse(QEvent::MouseButtonRelease, QPoint(100, 100), Qt::RightButton, Qt::NoButton);
    EXPECT_TRUE(recorded().isEmpty()) << "the right button";
}

TEST_F(PanelInteractionTest, APointPickSendsTheHitAndItsFace)
{
    addCube("cube");
    showPanel();
    selectMode("selectpoint", Scene::SELECT_POINTS);

    click(QPoint(103, 95));

    ASSERT_EQ(1, recorded().size()) << messages.join(" | ").toStdString();
    const QRegularExpressionMatch match =
        QRegularExpression("^selectpoint\\(cube,\\[([^,]+),([^,]+),([^,]+)\\],\\d+\\)$").match(recorded().first());
    ASSERT_TRUE(match.hasMatch()) << recorded().first().toStdString();
    const double z = match.captured(3).toDouble();
    EXPECT_GT(z, 0.0) << "on the front face";
    EXPECT_EQ(z, std::abs(match.captured(1).toDouble())) << "snapped to a corner";
    EXPECT_EQ(z, std::abs(match.captured(2).toDouble()));
}

TEST_F(PanelInteractionTest, AShiftDragMovesTheFocusedElementAndOneUndoPutsItBack)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    const Matrix4 before = cube->getTransformMatrix();
    showPanel();
    scene()->setFocus(cube.get());
    ASSERT_EQ(cube.get(), panel->getFocusElement());
    const Matrix4 view = panel->getTransformMatrix();
    const size_t stepsBefore = undoSteps();

    shiftDrag(QPoint(100, 100), QPoint(110, 95));

    EXPECT_TRUE(panel->getTransformMatrix() == view) << "the camera stays";
    const Matrix4 moved = cube->getTransformMatrix();
    EXPECT_DOUBLE_EQ(before[12] + 30.0, moved[12]) << "3 units a pixel to the right";
    EXPECT_DOUBLE_EQ(before[13] + 15.0, moved[13]) << "and up";
    EXPECT_EQ(stepsBefore + 1, undoSteps());
    ASSERT_EQ(1, recorded().size());
    EXPECT_TRUE(recorded().first().startsWith("transform(cube,")) << recorded().first().toStdString();

    ASSERT_TRUE(qel::main::UndoRedoManager::getInstance()->undo());
    EXPECT_MATRIX_EQ(before, cube->getTransformMatrix());
}

TEST_F(PanelInteractionTest, TheRecordedMoveReplaysToTheSameMatrix)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    showPanel();
    scene()->setFocus(cube.get());
    shiftDrag(QPoint(100, 100), QPoint(90, 120));
    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::RightButton, Qt::RightButton, Qt::ShiftModifier);
    mouse(QEvent::MouseMove, QPoint(107, 104), Qt::NoButton, Qt::RightButton, Qt::ShiftModifier);
    releaseShift();
    const Matrix4 moved = cube->getTransformMatrix();
    const QStringList macro = recorded();
    ASSERT_EQ(2, macro.size()) << "one command per Shift cycle";

    cube->setTransformMatrix(Matrix4::identity());
    for (const QString& command : macro)
        EXPECT_TRUE(run(command)) << command.toStdString();
    EXPECT_MATRIX_NEAR(moved, cube->getTransformMatrix());
}

TEST_F(PanelInteractionTest, WithoutShiftOrFocusTheGesturesMoveTheCamera)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    const Matrix4 before = cube->getTransformMatrix();
    showPanel();
    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::MiddleButton, Qt::MiddleButton, Qt::ShiftModifier);
    mouse(QEvent::MouseMove, QPoint(110, 100), Qt::NoButton, Qt::MiddleButton, Qt::ShiftModifier);
    releaseShift();
    EXPECT_DOUBLE_EQ(30.0, panel->getTransformMatrix()[12]) << "no focus: Shift changes nothing";
    EXPECT_MATRIX_EQ(before, cube->getTransformMatrix());

    scene()->setFocus(cube.get());
    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::RightButton, Qt::LeftButton | Qt::RightButton);
    mouse(QEvent::MouseMove, QPoint(100, 90), Qt::NoButton, Qt::LeftButton | Qt::RightButton);
    EXPECT_DOUBLE_EQ(1.05, panel->getScale());
    EXPECT_DOUBLE_EQ(31.5, panel->getTransformMatrix()[12]) << "the pan follows the zoom";
    mouse(QEvent::MouseMove, QPoint(100, 70), Qt::NoButton, Qt::LeftButton | Qt::RightButton | Qt::MiddleButton);
    EXPECT_DOUBLE_EQ(1.05, panel->getScale()) << "three buttons do nothing";
    EXPECT_MATRIX_EQ(before, cube->getTransformMatrix());
    EXPECT_TRUE(recorded().isEmpty());
}

TEST_F(PanelInteractionTest, TheWheelCountsAlongItsDominantAxis)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    showPanel();
    wheel(QPoint(0, 120));
    EXPECT_DOUBLE_EQ(1.072, panel->getScale()) << "a notch up zooms in";
    wheel(QPoint(-120, 30));
    EXPECT_DOUBLE_EQ(1.0, panel->getScale()) << "a mostly horizontal step counts its horizontal turn";
    wheel(QPoint(), QPoint(0, 30));
    EXPECT_DOUBLE_EQ(1.036, panel->getScale()) << "a touchpad step in pixels only";
    wheel(QPoint(), QPoint());
    EXPECT_DOUBLE_EQ(1.036, panel->getScale()) << "an empty step";

    // A horizontal step moves the focused element along the view axis as a vertical one does.
    scene()->setFocus(cube.get());
    const Matrix4 before = cube->getTransformMatrix();
    wheel(QPoint(120, 0), QPoint(), Qt::ShiftModifier);
    releaseShift();
    EXPECT_DOUBLE_EQ(before[14] - 24.0, cube->getTransformMatrix()[14]);
    EXPECT_DOUBLE_EQ(1.036, panel->getScale()) << "the camera stays";
}

TEST_F(PanelInteractionTest, AnAltShiftRightDragMovesNothing)
{
    ZPointer<SceneVCGModel> cube = addCube("cube");
    const Matrix4 before = cube->getTransformMatrix();
    showPanel();
    scene()->setFocus(cube.get());
    const Qt::KeyboardModifiers keys = Qt::ShiftModifier | Qt::AltModifier;
    mouse(QEvent::MouseButtonPress, QPoint(100, 100), Qt::RightButton, Qt::RightButton, keys);
    mouse(QEvent::MouseMove, QPoint(120, 130), Qt::NoButton, Qt::RightButton, keys);
    EXPECT_MATRIX_EQ(before, cube->getTransformMatrix());
    EXPECT_TRUE(panel->getTransformMatrix() == Matrix4::identity());
    releaseShift();
}

// A whole session as a user has it: load a model, pick it, pick a face, move it with Shift;
// the host replays the recorded macro to the same scene.
TEST_F(PanelInteractionTest, TheHostReplaysARecordedSessionToTheSameScene)
{
    const QString cubeFile = directory.filePath("cube.off");
    {
        QFile file(cubeFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Text));
        file.write("OFF\n8 12 0\n-1 -1 -1\n1 -1 -1\n1 1 -1\n-1 1 -1\n-1 -1 1\n1 -1 1\n1 1 1\n-1 1 1\n"
                   "3 0 2 1\n3 0 3 2\n3 4 5 6\n3 4 6 7\n3 0 1 5\n3 0 5 4\n"
                   "3 2 3 7\n3 2 7 6\n3 1 2 6\n3 1 6 5\n3 0 4 7\n3 0 7 3\n");
    }
    ASSERT_TRUE(processor()->executeCommand("loadmodel(" + cubeFile + ",cube)",
                                            qel::main::Command::EXECUTE_SYNCHRONOUS, true));
    ZPointer<qel::scene::SceneElement> cube = scene()->getSceneElement("cube");
    ASSERT_TRUE(cube);
    showPanel();
    selectMode("selectsceneelements", Scene::SELECT_ELEMENTS);
    click(QPoint(103, 95));
    ASSERT_EQ(cube.get(), scene()->getFocusedNode().get()) << recorded().join(" | ").toStdString();
    selectMode("selectface", Scene::SELECT_FACES);
    click(QPoint(103, 95));
    shiftDrag(QPoint(100, 100), QPoint(90, 120));
    const Matrix4 moved = cube->getTransformMatrix();
    const QStringList session = recorded();
    ASSERT_EQ(4, session.size()) << session.join(" | ").toStdString() << "\n" << messages.join(" | ").toStdString();
    EXPECT_TRUE(session.at(2).startsWith("selectface(cube,")) << session.at(2).toStdString();
    EXPECT_TRUE(session.at(3).startsWith("transform(cube,")) << session.at(3).toStdString();
    recorder()->stop();

    // The load opened a scene window, as it does for a user; it isn't needed any more.
    qel::gui::Viewer::getInstance()->cleanUpWindows();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    const QString dump = directory.filePath("scene.json");
    const qel::test::HostRun host = qel::test::runHost(
        {"--offscreen", "--run", directory.filePath("macro.txt"), "--dump-scene", dump});
    ASSERT_EQ(0, host.exitCode) << host.err.toStdString();
    QFile file(dump);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject replayed = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_EQ("cube", replayed.value("focused").toString().toStdString());
    bool found = false;
    for (const QJsonValue& element : replayed.value("elements").toArray()) {
        if (element.toObject().value("name").toString() != "cube")
            continue;
        found = true;
        const QJsonArray transform = element.toObject().value("transform").toArray();
        ASSERT_EQ(16, transform.size());
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(moved[i], transform.at(i).toDouble(), 1e-9 * (1.0 + std::abs(moved[i]))) << "entry " << i;
    }
    EXPECT_TRUE(found);
}
