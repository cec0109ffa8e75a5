// The viewer's scene windows, the active panel and its event, viewscene, and the picture the
// host asks for.
#include "cubemodel.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/overseer.h"
#include "module_scene/commands/viewscene.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/scenewindow.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulesceneservice.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"
#include "scene/eventrecorder.h"
#include "sceneviewfixture.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <gtest/gtest.h>

using qel::gui::ScenePanel;
using qel::gui::SceneWindow;
using qel::gui::Viewer;
using namespace qel::test;

namespace {

// Windows go at the next turns of the event loop: the workspace window first, then the
// scene window it took along.
void finishDeletions()
{
    for (int round = 0; round < 3; ++round)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

class ViewerTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        Viewer::getInstance()->cleanUpWindows();
        finishDeletions();
        delete Viewer::getInstance();
    }

    static Viewer* viewer() { return Viewer::getInstance(); }
};

} // namespace

TEST_F(ViewerTest, OpeningAndClosingWindowsTellsWhichPanelIsActive)
{
    EventRecorder events({qel::scene::SCENEPANEL_CHANGED});
    SceneWindow* first = viewer()->createSceneWindow();
    ASSERT_NE(nullptr, first);
    ScenePanel* firstPanel = first->getPanel();
    ASSERT_NE(nullptr, firstPanel);
    EXPECT_EQ(firstPanel, viewer()->getActivePanel().data());
    EXPECT_TRUE(firstPanel->getScene() == viewer()->getGlobalScene());
    EXPECT_EQ("Scene Window", first->getWorkspaceWindow()->windowTitle());
    EXPECT_EQ(QSize(640, 480), first->getWorkspaceWindow()->size());
    auto* workspaceWindow = qobject_cast<QMdiSubWindow*>(first->getWorkspaceWindow());
    ASSERT_NE(nullptr, workspaceWindow);
    EXPECT_EQ(qel::main::Overseer::getInstance()->getWorkspace(), workspaceWindow->mdiArea());
    ASSERT_EQ(1u, events.records.size());
    EXPECT_EQ(firstPanel, events.records[0].data);

    SceneWindow* second = viewer()->createSceneWindow();
    ScenePanel* secondPanel = second->getPanel();
    EXPECT_EQ(2, viewer()->getNumberOfSceneWindows());
    EXPECT_EQ(1u, viewer()->getSceneWindows()->count(second));
    ASSERT_EQ(2u, events.records.size());
    EXPECT_EQ(secondPanel, events.records[1].data);

    viewer()->setActivePanel(secondPanel);
    EXPECT_EQ(2u, events.records.size()) << "the same panel again is no news";

    first->close();
    finishDeletions();
    EXPECT_EQ(1, viewer()->getNumberOfSceneWindows());
    EXPECT_EQ(2u, events.records.size()) << "closing a window that is not the active one tells nobody";

    second->close();
    finishDeletions();
    EXPECT_EQ(0, viewer()->getNumberOfSceneWindows());
    ASSERT_EQ(3u, events.records.size()) << "losing the active panel is told once";
    EXPECT_EQ(nullptr, events.records[2].data);
    EXPECT_TRUE(viewer()->getActivePanel().isNull());
}

TEST_F(ViewerTest, CleaningUpClosesEveryWindow)
{
    viewer()->createSceneWindow();
    viewer()->createSceneWindow();
    EventRecorder events({qel::scene::SCENEPANEL_CHANGED});
    viewer()->cleanUpWindows();
    finishDeletions();
    EXPECT_EQ(0, viewer()->getNumberOfSceneWindows());
    ASSERT_FALSE(events.records.empty());
    EXPECT_EQ(nullptr, events.records.back().data);
}

TEST_F(ViewerTest, ViewsceneOpensAWindowOnTheGlobalScene)
{
    qel::main::CommandProcessor* processor = qel::main::Overseer::getInstance()->getCommandProcessor();
    if (!processor->getCommand("viewscene"))
        processor->registerCommand(qel::commands::scene::ViewScene::create());
    qel::main::Command* prototype = processor->getCommand("viewscene");
    ASSERT_NE(nullptr, prototype);
    EXPECT_TRUE(prototype->getParameterSets()->empty());
    ASSERT_EQ(3u, prototype->getGUIDescriptors().size());
    EXPECT_EQ(QKeySequence(Qt::Key_V), prototype->getGUIDescriptors()[0]->getShortcut());
    EXPECT_EQ(qel::main::CommandGUIDescriptor::EXTRA, prototype->getGUIDescriptors()[2]->getFlag());

    EXPECT_TRUE(qel::main::Overseer::getInstance()->executeCommand("viewscene", qel::main::Command::EXECUTE_SYNCHRONOUS,
                                                                   false));
    EXPECT_EQ(1, viewer()->getNumberOfSceneWindows());
    EXPECT_FALSE(viewer()->getActivePanel().isNull());
}

TEST_F(ViewerTest, TheServiceRendersTheActiveViewAtTheAskedSize)
{
    viewer()->getGlobalScene()->addElement(qel::test::makeCubeModel("cube", QColor(0, 0, 255)));
    qel::scene::ModuleSceneService* service = qel::scene::ModuleSceneService::getInstance();

    // Without a window a panel of its own looks from the front.
    QImage image = service->renderScene(QSize(320, 240));
    ASSERT_EQ(QSize(320, 240), image.size());
    EXPECT_TRUE(colorAt(image, 160, 120, QColor(0, 0, 255)));
    EXPECT_TRUE(service->renderScene(QSize(0, 10)).isNull());

    // With one, its camera: panned to the right the model leaves the centre.
    SceneWindow* window = viewer()->createSceneWindow();
    window->getPanel()->getTransformMatrix()[12] = 60.0;
    image = service->renderScene(QSize(320, 240));
    EXPECT_EQ(QSize(320, 240), image.size());
    EXPECT_FALSE(qel::test::closeTo(QColor(0, 0, 255), image.pixelColor(100, 120)));
    EXPECT_TRUE(colorAt(image, 160 + static_cast<int>(60 * qel::test::pixelsPerUnit(240, 171.0)),
                        120, QColor(0, 0, 255)));
    EXPECT_EQ(QSize(640, 480), window->getWorkspaceWindow()->size()) << "the window keeps its size";
}
