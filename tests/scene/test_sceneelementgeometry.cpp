#include "eventrecorder.h"
#include "module_scene/sceneevents.h"
#include "support/logcapture.h"
#include "testelement.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <gtest/gtest.h>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef SceneElement::Box Box;
typedef SceneElement::Matrix4 Matrix4;
typedef SceneElement::Vector4 Vector4;

// A box of the given centre and size, corners built.
Box box(double cx, double cy, double cz, double sx, double sy, double sz)
{
    return Box(Vector4(cx, cy, cz, 1.0), Vector4(sx, sy, sz, 0.0));
}

ZPointer<TestElement> intersectable(const Box& raw)
{
    ZPointer<TestElement> element(new TestElement("box"));
    element->m_isIntersectable = true;
    element->m_rawBoundingBox = raw;
    return element;
}

Vector4 point(double x, double y, double z)
{
    return Vector4(x, y, z, 1.0);
}

} // namespace

TEST(SceneElementGeometry, UnscaledElementsAnswerTheRawBox)
{
    ZPointer<TestElement> element(new TestElement("raw"));
    element->m_rawBoundingBox = box(1, 2, 3, 2, 2, 2);
    element->setScalingFactor(4.0);
    EXPECT_EQ(element->m_rawBoundingBox.center, element->getBoundingBox(true).center);
    EXPECT_EQ(element->m_rawBoundingBox.size, element->getBoundingBox(true).size);
    EXPECT_EQ(0.0, element->getBoundingSphereDiameter()); // no scaling factor: nothing recomputed
}

TEST(SceneElementGeometry, ScaledBoxIsCachedUntilTheFactorChanges)
{
    ZPointer<TestElement> element(new TestElement("scaled"));
    element->m_hasScalingFactor = true;
    element->m_rawBoundingBox = box(1, 2, 3, 2, 2, 2);
    element->setScalingFactor(2.0);

    const Box scaled = element->getBoundingBox(true);
    EXPECT_EQ(Vector4(2.0, 4.0, 6.0, 1.0), scaled.center);
    EXPECT_EQ(Vector4(4.0, 4.0, 4.0, 0.0), scaled.size);
    EXPECT_EQ(Vector4(4.0, 6.0, 8.0, 1.0), scaled.corners[0]);
    EXPECT_DOUBLE_EQ(std::sqrt(48.0), element->getBoundingSphereDiameter());
    EXPECT_EQ(element->m_rawBoundingBox.size, element->getBoundingBox(false).size);

    // The cache holds until the factor is set again.
    element->m_rawBoundingBox = box(0, 0, 0, 1, 1, 1);
    EXPECT_EQ(Vector4(2.0, 4.0, 6.0, 1.0), element->getBoundingBox(true).center);
    element->setScalingFactor(3.0);
    EXPECT_EQ(Vector4(3.0, 3.0, 3.0, 0.0), element->getBoundingBox(true).size);
    EXPECT_EQ(Vector4(0.0, 0.0, 0.0, 1.0), element->getBoundingBox(true).center);
}

TEST(SceneElementGeometry, ConstBoxQueryDoesNotFillTheCache)
{
    ZPointer<TestElement> element(new TestElement("scaled"));
    element->m_hasScalingFactor = true;
    element->m_rawBoundingBox = box(1, 0, 0, 1, 1, 1);
    element->setScalingFactor(2.0);
    element->m_rawBoundingBox = box(5, 0, 0, 1, 1, 1);
    // setScalingFactor filled the cache with the first box; a const query reads it.
    const SceneElement& constElement = *element;
    EXPECT_EQ(2.0, constElement.getBoundingBox(true).center.x());

    ZPointer<TestElement> fresh(new TestElement("fresh"));
    fresh->m_hasScalingFactor = true;
    fresh->m_rawBoundingBox = box(1, 0, 0, 1, 1, 1);
    const SceneElement& constFresh = *fresh;
    EXPECT_EQ(1.0, constFresh.getBoundingBox(true).center.x());
    fresh->m_rawBoundingBox = box(7, 0, 0, 1, 1, 1);
    EXPECT_EQ(7.0, fresh->getBoundingBox(true).center.x());
}

TEST(SceneElementGeometry, RayTestHitsTheBoxAndMissesBesideOrBehind)
{
    ZPointer<TestElement> element = intersectable(Box(2.0));
    double t = -1.0;

    // The first triangle in the fixed order that is hit counts, here the far face z = +1.
    EXPECT_TRUE(element->intersect(point(0.5, -0.5, -10), point(0.5, -0.5, 10), &t));
    EXPECT_DOUBLE_EQ(0.55, t);
    EXPECT_TRUE(element->intersect(point(0, 0, -10), point(0, 0, 10), nullptr));
    EXPECT_FALSE(element->intersect(point(5, 0, -10), point(5, 0, 10), &t));
    EXPECT_FALSE(element->intersect(point(0, 0, -10), point(0, 0, -20), &t));

    element->m_isIntersectable = false;
    EXPECT_FALSE(element->intersect(point(0, 0, -10), point(0, 0, 10), &t));
}

TEST(SceneElementGeometry, RayTestUsesThePlacedBox)
{
    ZPointer<TestElement> element = intersectable(Box(2.0));
    element->setTransformMatrix(Matrix4::translation(10, 0, 0));
    EXPECT_TRUE(element->intersect(point(10.5, 0.5, -10), point(10.5, 0.5, 10), nullptr));
    EXPECT_FALSE(element->intersect(point(0.5, 0.5, -10), point(0.5, 0.5, 10), nullptr));

    element->m_hasScalingFactor = true;
    element->setScalingFactor(3.0);
    EXPECT_TRUE(element->intersect(point(12.5, 0, -10), point(12.5, 0, 10), nullptr));
}

TEST(SceneElementGeometry, InitializeRunsOnceAndMeasuresTheRawBox)
{
    ZPointer<TestElement> element(new TestElement("init"));
    element->m_rawBoundingBox = Box(2.0);
    element->initialize();
    element->initialize();
    EXPECT_EQ(1, element->initializeCalls);
    EXPECT_TRUE(element->isInitialized());
    EXPECT_DOUBLE_EQ(2.0 * std::sqrt(3.0), element->getBoundingSphereDiameter());

    ZPointer<TestElement> measured(new TestElement("measured"));
    measured->m_rawBoundingBox = Box(2.0);
    measured->getBoundingSphereDiameter() = 7.0;
    measured->initialize();
    EXPECT_EQ(7.0, measured->getBoundingSphereDiameter());
}

TEST(SceneElementGeometry, MatricesStartAsIdentityAndSetReplacesCurrentAndFuture)
{
    ZPointer<TestElement> element(new TestElement("moved"));
    EXPECT_TRUE(element->getTransformMatrix().isIdentity());
    EXPECT_TRUE(element->getFutureTransformMatrix().isIdentity());
    EXPECT_TRUE(element->getPastTransformMatrix().isIdentity());
    EXPECT_TRUE(element->getOrigin().isIdentity());

    CauseRecorder observer;
    element->attachObserver(&observer);
    const Matrix4 first = Matrix4::translation(1, 2, 3);
    const Matrix4 second = Matrix4::translation(4, 5, 6);
    element->setTransformMatrix(first);
    element->setTransformMatrix(second);
    EXPECT_EQ(second, element->getTransformMatrix());
    EXPECT_EQ(second, element->getFutureTransformMatrix());
    EXPECT_EQ(first, element->getPastTransformMatrix());
    EXPECT_EQ(std::vector<int>(2, SceneElement::CHANGE_TRANSFORM), observer.causes);
    element->detachObserver(&observer);

    qel::test::LogCapture log;
    element->m_isTransformable = false;
    element->setTransformMatrix(first);
    ASSERT_EQ(1, log.count("Element moved is not transformable", 2000));
    EXPECT_EQ(847, log.records().front().line);
    EXPECT_EQ(first, element->getTransformMatrix());
}

TEST(SceneElementGeometry, CompleteMatrixIsTransformOriginAndScale)
{
    ZPointer<TestElement> element(new TestElement("complete"));
    element->m_isOriginChangeable = true;
    element->setTransformMatrix(Matrix4::translation(1, 0, 0));
    element->setOrigin(Matrix4::translation(0, 2, 0));
    EXPECT_EQ(Matrix4::translation(1, 2, 0), element->getCompleteTransformMatrix());

    element->m_hasScalingFactor = true;
    element->setScalingFactor(2.0);
    const Matrix4 expected = Matrix4::translation(1, 2, 0) * Matrix4::scaling(2.0);
    EXPECT_EQ(expected, element->getCompleteTransformMatrix());
    EXPECT_EQ(Matrix4::translation(1, 0, 0), element->modifyToTransformMatrix(expected));
}

TEST(SceneElementGeometry, AMoveCanBeRefusedByAListener)
{
    ZPointer<TestElement> element(new TestElement("vetoed"));
    element->setTransformMatrix(Matrix4::translation(1, 2, 3));
    CauseRecorder observer;
    element->attachObserver(&observer);
    bool refuse = true;
    EventRecorder events{SCENE_ELEMENT_TRANSFORM_STARTING};
    events.onEvent = [&refuse](const qel::main::Event* event) {
        if (refuse)
            *static_cast<bool*>(event->getData()) = false;
    };

    element->translate(4, 5, 6);
    EXPECT_EQ(Matrix4::translation(1, 2, 3), element->getTransformMatrix());
    EXPECT_EQ(Matrix4::identity(), element->getPastTransformMatrix());
    EXPECT_EQ(Matrix4::translation(4, 5, 6), element->getFutureTransformMatrix());
    EXPECT_TRUE(observer.causes.empty());

    refuse = false;
    element->translate(4, 5, 6); // absolute: ends at (4,5,6), not (5,7,9)
    EXPECT_EQ(Matrix4::translation(4, 5, 6), element->getTransformMatrix());
    EXPECT_EQ(Matrix4::translation(1, 2, 3), element->getPastTransformMatrix());
    EXPECT_EQ(std::vector<int>{SceneElement::CHANGE_TRANSFORM}, observer.causes);
    EXPECT_EQ(element.get(), events.records.back().source);
    element->detachObserver(&observer);
}

TEST(SceneElementGeometry, FinishingAMoveTellsTheLeavesFirst)
{
    ZPointer<TestElement> parent(new TestElement("parent"));
    ZPointer<TestElement> child(new TestElement("child"));
    parent->addChild(child);
    EventRecorder events{SCENE_ELEMENT_TRANSFORM_FINISH, SCENE_ELEMENT_TRANSFORM_FINISHED};

    parent->transformFinish(nullptr);
    ASSERT_EQ(4u, events.records.size());
    EXPECT_EQ(child.get(), events.records[0].source);     // child FINISH, data: the initiator
    EXPECT_EQ(parent.get(), events.records[0].data);
    EXPECT_EQ(child.get(), events.records[1].source);     // child FINISHED
    EXPECT_EQ(parent.get(), events.records[2].source);    // parent FINISH, data null: the moved one
    EXPECT_EQ(nullptr, events.records[2].data);
    EXPECT_EQ(parent.get(), events.records[3].source);

    events.clear();
    child->transformFinish(child.get());
    EXPECT_TRUE(events.records.empty());
    parent->clearChilds();
}

TEST(SceneElementGeometry, OriginIsGuardedAndMovesWithoutMovingTheElement)
{
    ZPointer<TestElement> element(new TestElement("pivot"));
    element->setTransformMatrix(Matrix4::translation(1, 2, 3));
    qel::test::LogCapture log;
    element->setOriginPosition(5, 5, 5);
    element->setOrigin(Matrix4::translation(1, 1, 1));
    ASSERT_EQ(2, log.count("Origin of element pivot is not changeable!", 2000));
    EXPECT_EQ(200, log.records()[0].line);
    EXPECT_EQ(187, log.records()[1].line);
    EXPECT_TRUE(element->getOrigin().isIdentity());

    element->m_isOriginChangeable = true;
    const Matrix4 before = element->getCompleteTransformMatrix();
    element->setOriginPosition(5, 6, 7);
    EXPECT_EQ(Vector4(5, 6, 7, 1), element->getCenter());
    EXPECT_EQ(before, element->getCompleteTransformMatrix());
}

TEST(SceneElementGeometry, XmlRoundTripKeepsFieldsToSinglePrecision)
{
    ZPointer<TestElement> saved(new TestElement("saved"));
    saved->setOpacity(0.1);
    saved->setVisible(false);
    saved->showBoundingBox(true);
    saved->setTransformMatrix(Matrix4::translation(1.25, 0.1, 3));

    QByteArray document;
    QXmlStreamWriter writer(&document);
    writer.writeStartElement("element");
    bool abort = false;
    saved->saveTo(&writer, nullptr, abort);
    writer.writeStartElement("unknown");
    writer.writeEndElement();
    writer.writeEndElement();
    EXPECT_TRUE(document.contains("<entry col=\"3\" row=\"1\">0.1</entry>"));

    ZPointer<TestElement> loaded(new TestElement("other"));
    QXmlStreamReader reader(document);
    reader.readNextStartElement(); // "element"
    while (reader.readNextStartElement())
        loaded->loadFrom(&reader, nullptr, nullptr, abort);
    EXPECT_EQ("saved", loaded->getName());
    EXPECT_EQ(static_cast<double>(0.1f), loaded->getOpacity());
    EXPECT_FALSE(loaded->isVisible());
    EXPECT_TRUE(loaded->isBoundingBoxVisible());
    EXPECT_EQ(1.25, loaded->getTransformMatrix()(0, 3));
    EXPECT_EQ(static_cast<double>(0.1f), loaded->getTransformMatrix()(1, 3));
    EXPECT_EQ(loaded->getTransformMatrix(), loaded->getFutureTransformMatrix());
    EXPECT_TRUE(loaded->getOrigin().isIdentity());
}

TEST(SceneElementGeometry, XmlEntriesOutsideTheMatrixAreDropped)
{
    const QByteArray document = "<transform><entry col=\"4\" row=\"0\">9</entry>"
                                "<entry col=\"1\" row=\"-1\">8</entry><entry col=\"2\" row=\"2\">7</entry></transform>";
    ZPointer<TestElement> loaded(new TestElement("partial"));
    QXmlStreamReader reader(document);
    reader.readNextStartElement();
    bool abort = false;
    loaded->loadFrom(&reader, nullptr, nullptr, abort);
    Matrix4 expected = Matrix4::identity();
    expected[3] = 8; // col 1, row -1 is place 3
    expected(2, 2) = 7;
    EXPECT_EQ(expected, loaded->getTransformMatrix());
    EXPECT_EQ(expected, loaded->getFutureTransformMatrix());
}
