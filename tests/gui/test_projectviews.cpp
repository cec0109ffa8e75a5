// The cameras of the open scene windows in the scene's project section.
#include "kernel/io/ztarfile.h"
#include "kernel/io/zfile.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/scenewindow.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/project/sceneprojectparticipant.h"
#include "module_scene/scene.h"

#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>
#include <memory>

using qel::gui::ScenePanel;
using qel::gui::SceneWindow;
using qel::gui::Viewer;

namespace {

class ProjectViewsTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        Viewer::getInstance()->cleanUpWindows();
        for (int round = 0; round < 3; ++round)
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        delete Viewer::getInstance();
    }
};

TEST_F(ProjectViewsTest, CamerasOfOpenWindowsComeBack)
{
    qel::scene::SceneProjectParticipant participant([] { return qel::scene::_GlobalScene(); }, true);
    ScenePanel* panel = Viewer::getInstance()->createSceneWindow()->getPanel();
    ASSERT_NE(nullptr, panel);
    ScenePanel::Matrix4 view = ScenePanel::Matrix4::identity();
    view(0, 3) = 12.5;
    view(1, 2) = -0.25;
    view(2, 1) = 1.0 / 3.0;
    panel->setTransformMatrix(view);
    panel->setScale(1.75);

    QTemporaryDir directory;
    const QString file = directory.filePath("views.qel");
    {
        qel::io::ZTarFile tar(file);
        ASSERT_TRUE(tar.open(QIODevice::WriteOnly));
        QByteArray xml;
        QXmlStreamWriter writer(&xml);
        writer.writeStartElement("scene");
        const bool abort = false;
        QString error;
        ASSERT_TRUE(participant.save(&writer, &tar, abort, error)) << qPrintable(error);
        writer.writeEndElement();
        ASSERT_TRUE(xml.contains("<views><window><transform>")) << xml.constData();
        ASSERT_TRUE(tar.addData(xml, "project.xml"));
        tar.close();
    }

    panel->resetTransform();
    qel::io::ZTarFile tar(file);
    ASSERT_TRUE(tar.open(QIODevice::ReadOnly));
    std::unique_ptr<qel::io::ZFile> xml(tar.getFile("project.xml"));
    ASSERT_TRUE(xml && xml->open(QIODevice::ReadOnly));
    QXmlStreamReader reader(xml->readAll());
    reader.readNextStartElement();
    bool abort = false;
    QString error;
    ASSERT_TRUE(participant.load(&reader, &tar, abort, error)) << qPrintable(error);
    // Nothing is live before the commit.
    EXPECT_EQ(ScenePanel::Matrix4::identity(), panel->getTransformMatrix());
    participant.commit();
    EXPECT_EQ(view, panel->getTransformMatrix());
    EXPECT_EQ(1.75, panel->getScale());
}

} // namespace
