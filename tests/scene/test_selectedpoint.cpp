#include "eventrecorder.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"
#include "module_scene/selectedpoint.h"
#include "support/logcapture.h"
#include "testelement.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>
#include <memory>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef SelectedPoint::Vector4 Vector4;

// Starts a reader on the first element of the text.
std::unique_ptr<QXmlStreamReader> readerOn(const QString& xml)
{
    auto reader = std::make_unique<QXmlStreamReader>(xml);
    reader->readNextStartElement();
    return reader;
}

QString saved(const SelectedPoint* point)
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    const bool abort = false;
    SelectedPoint::saveTo(point, &writer, abort);
    return xml;
}

} // namespace

TEST(SelectedPoint, ThePointFollowsItsElementAndStaysWhereItWasWhenTheElementDies)
{
    SceneHolder scene;
    Element element = make("Model");
    element->setTransformMatrix(SceneElement::Matrix4::translation(1.0, 2.0, 3.0));
    scene->addElement(element);
    EventRecorder events{POINTS_SELECTED};
    CauseRecorder sceneNotices;
    scene->attachObserver(&sceneNotices);

    scene->addSelectedPoint(Vector4(2.0, 2.0, 3.0, 1.0), element);

    ASSERT_EQ(1u, scene->getSelectedPoints()->size());
    SelectedPoint* point = scene->getSelectedPoints()->front();
    ASSERT_EQ(1u, events.records.size());
    EXPECT_EQ(point, events.records[0].data);
    EXPECT_EQ(1u, sceneNotices.causes.size());
    EXPECT_EQ(Vector4(1.0, 0.0, 0.0, 1.0), point->getOriginalPoint());
    EXPECT_EQ(Vector4(2.0, 2.0, 3.0, 0.0), point->getTransformedPoint());
    EXPECT_EQ(SelectedPoint::NoFace, point->getAssociatedFaceIndex());
    scene->detachObserver(&sceneNotices);

    CauseRecorder pointNotices;
    point->attachObserver(&pointNotices);
    element->setTransformMatrix(SceneElement::Matrix4::translation(5.0, 0.0, 0.0));
    EXPECT_EQ(Vector4(6.0, 0.0, 0.0, 0.0), point->getTransformedPoint());
    EXPECT_EQ(std::vector<int>{SceneElement::CHANGE_TRANSFORM}, pointNotices.causes);

    scene->removeElement(element);
    element = nullptr;
    EXPECT_TRUE(point->isElementLost());
    EXPECT_EQ((std::vector<int>{SceneElement::CHANGE_TRANSFORM, 0}), pointNotices.causes);
    EXPECT_EQ(Vector4(6.0, 0.0, 0.0, 0.0), point->getTransformedPoint());
    EXPECT_EQ(1u, scene->getSelectedPoints()->size());
    point->detachObserver(&pointNotices);
}

TEST(SelectedPoint, TheTransformedPointLeavesTheScaleToTheDrawer)
{
    SceneHolder scene;
    auto model = qel::test::makeModel("Model", 6.0, 8.0);
    scene->addElement(model);
    ASSERT_DOUBLE_EQ(10.0, model->getScalingFactor());
    SelectedPoint point(model, SelectedPoint::Point3(10.0f, 20.0f, 0.0f), 4);
    EXPECT_EQ(Vector4(1.0, 2.0, 0.0, 1.0), point.getOriginalPoint());
    EXPECT_EQ(SelectedPoint::Vector3(1.0, 2.0, 0.0), point.getPoint());
    EXPECT_EQ(4u, point.getAssociatedFaceIndex());
}

TEST(SelectedPoint, TheSceneListTellsEachChangeAndIgnoresIndicesPastTheEnd)
{
    SceneHolder scene;
    scene->addSelectedPoint(Vector4(1.0, 0.0, 0.0, 1.0));
    scene->addSelectedPoint(Vector4(2.0, 0.0, 0.0, 1.0));
    EXPECT_EQ(scene->getRootNode().get(), scene->getSelectedPoints()->front()->getElement());
    EventRecorder events{POINTS_SELECTED, POINTS_DESELECTED, POINTS_REPLACED};
    CauseRecorder notices;
    scene->attachObserver(&notices);
    scene->setChanged(false);

    scene->removeSelectedPoint(5u);
    EXPECT_EQ(1u, notices.causes.size());
    EXPECT_TRUE(events.records.empty());
    EXPECT_EQ(2u, scene->getSelectedPoints()->size());
    EXPECT_FALSE(scene->isChanged());

    ZPointer<SelectedPoint> first = scene->getSelectedPoints()->front();
    scene->removeSelectedPoint(0u);
    EXPECT_EQ(3u, notices.causes.size());
    ASSERT_EQ(QStringList{"POINTS_DESELECTED"}, events.names());
    EXPECT_EQ(first.get(), events.records[0].data);
    EXPECT_TRUE(scene->isChanged());

    events.clear();
    scene->replaceSelectedPoints(Scene::PointList{first, first});
    EXPECT_EQ((QStringList{"POINTS_DESELECTED", "POINTS_REPLACED"}), events.names());
    EXPECT_EQ(nullptr, events.records[0].data);
    EXPECT_EQ(2u, scene->getSelectedPoints()->size());
    scene->removeSelectedPoint(first.get());
    EXPECT_TRUE(scene->getSelectedPoints()->empty());
    scene->detachObserver(&notices);

    LogCapture log;
    scene->clearScene();
    scene->addSelectedPoint(Vector4(1.0, 0.0, 0.0, 1.0));
    ASSERT_EQ(1, log.count("There is no element to add the available point.", 1000));
    EXPECT_EQ(762, log.records().front().line);
    EXPECT_EQ("qel::scene::Scene::addSelectedPoint", log.records().front().function);
    EXPECT_TRUE(scene->getSelectedPoints()->empty());
}

TEST(SelectedPoint, SavedPointsReadBackAndBindToElementsThatComeLater)
{
    SceneHolder scene;
    Element element = make("Model");
    element->setTransformMatrix(SceneElement::Matrix4::translation(0.0, 0.0, 1.0));
    scene->addElement(element);
    SelectedPoint point(element, SelectedPoint::Point3(0.5f, 0.25f, 1.0f), SelectedPoint::NoFace);
    point.setHidden(true);
    const QString xml = saved(&point);
    EXPECT_FALSE(xml.contains("faceindex"));
    EXPECT_TRUE(xml.contains("referencename=\"Model\""));

    auto reader = readerOn(xml);
    ZPointer<SelectedPoint> loaded = SelectedPoint::loadFrom(reader.get(), scene.get());
    ASSERT_FALSE(loaded.isNull());
    EXPECT_EQ(element.get(), loaded->getElement());
    EXPECT_EQ(point.getOriginalPoint(), loaded->getOriginalPoint());
    EXPECT_EQ(point.getTransformedPoint(), loaded->getTransformedPoint());
    EXPECT_TRUE(loaded->isHidden());
    EXPECT_EQ(SelectedPoint::NoFace, loaded->getAssociatedFaceIndex());

    EXPECT_TRUE(SelectedPoint::loadFrom(readerOn("<line/>").get(), scene.get()) == nullptr);

    // A point of an element not loaded yet waits for it; only the value 1 hides.
    reader = readerOn("<point x=\"1\" y=\"0\" z=\"0\" referencename=\"Later\" hidden=\"2\" faceindex=\"5\"/>");
    ZPointer<SelectedPoint> waiting = SelectedPoint::loadFrom(reader.get(), scene.get());
    EXPECT_TRUE(waiting->isElementLost());
    EXPECT_FALSE(waiting->isHidden());
    EXPECT_EQ(5u, waiting->getAssociatedFaceIndex());
    reader = readerOn("<point x=\"1\" y=\"0\" z=\"0\" referencename=\"Later\"/>");
    ZPointer<SelectedPoint> dropped = SelectedPoint::loadFrom(reader.get(), scene.get());
    dropped = nullptr;

    Element later = make("Later");
    later->setTransformMatrix(SceneElement::Matrix4::translation(0.0, 3.0, 0.0));
    scene->addElement(later);
    EXPECT_FALSE(waiting->isElementLost());
    EXPECT_EQ(later.get(), waiting->getElement());
    EXPECT_EQ(Vector4(1.0, 3.0, 0.0, 0.0), waiting->getTransformedPoint());
}
