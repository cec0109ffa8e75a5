#include "eventrecorder.h"
#include "module_scene/multipleelementsselection.h"
#include "module_scene/scenecoordinatesystem.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/sceneevents.h"
#include "testelement.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace qel::scene;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

typedef SceneElement::Matrix4 Matrix4;
typedef SceneElement::Vector4 Vector4;

// A cube of edge 2 around its origin, placed by the matrix.
Element cube(const QString& name, const Matrix4& placement)
{
    Element element(new TestElement(name));
    element->m_rawBoundingBox = SceneElement::Box(2.0);
    element->setTransformMatrix(placement);
    return element;
}

// Counter-clockwise seen from +z, for column vectors.
Matrix4 turnAboutZ(double degrees)
{
    const double angle = degrees * M_PI / 180.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return Matrix4::fromRows({c, -s, 0.0, 0.0, s, c, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0});
}

void expectNear(const Matrix4& expected, const Matrix4& actual)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], actual[i], 1e-9) << "entry " << i;
}

void expectNear(const Vector4& expected, const Vector4& actual)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(expected[i], actual[i], 1e-9) << "component " << i;
}

struct Group
{
    Group()
    {
        node->addChild(a, false);
        node->addChild(b, false);
    }
    ~Group() { node->clearChilds(); }

    ZPointer<MultipleElementsSelection> node{new MultipleElementsSelection};
    Element a = cube("A", Matrix4::identity());
    Element b = cube("B", Matrix4::translation(10.0, 0.0, 0.0) * turnAboutZ(90.0));
};

} // namespace

TEST(MultipleElementsSelection, IsAnInternalNodeThatOnlyTransformableElementsJoin)
{
    ZPointer<SceneElement> made(SceneElementFactory::getInstance()->createElement("MultipleElementsSelection"));
    ASSERT_FALSE(made.isNull());
    auto* node = dynamic_cast<MultipleElementsSelection*>(made.get());
    ASSERT_NE(nullptr, node);
    ZPointer<SceneElement> root(new SceneCoordinateSystem);
    Element fixed = cube("Fixed", Matrix4::identity());
    fixed->m_isTransformable = false;
    node->addChild(root, false);
    node->addChild(fixed, false);
    EXPECT_TRUE(node->getChilds()->empty());

    // One member: the box and the centre are those of the member.
    Element member = cube("Member", Matrix4::translation(4.0, 0.0, 0.0));
    node->addChild(member, false);
    EXPECT_TRUE(member->getParentSceneElement().isNull());
    EXPECT_EQ(Vector4(4.0, 0.0, 0.0, 1.0), node->getGroupBoundingBox().center);
    EXPECT_EQ(Vector4(4.0, 0.0, 0.0, 1.0), node->getTransformMatrix().getColumn(3));
    EXPECT_EQ(Vector4(0.0, 0.0, 0.0, 1.0), node->getBoundingBox(false).center);
    EXPECT_DOUBLE_EQ(std::sqrt(3.0), node->getGroupRadius());
    node->clearChilds();
}

TEST(MultipleElementsSelection, RemovingAMemberComputesTheBoxAnew)
{
    Group group;
    Element far = cube("Far", Matrix4::translation(0.0, 20.0, 0.0));
    group.node->addChild(far, false);
    expectNear(Vector4(12.0, 22.0, 2.0, 0.0), group.node->getGroupBoundingBox().size);

    group.node->removeChild(far);
    const SceneElement::Box& box = group.node->getGroupBoundingBox();
    expectNear(Vector4(12.0, 2.0, 2.0, 0.0), box.size);
    expectNear(Vector4(5.0, 0.0, 0.0, 1.0), box.center);
    expectNear(Vector4(5.0, 0.0, 0.0, 1.0), group.node->getTransformMatrix().getColumn(3));
    EXPECT_NEAR(std::sqrt(38.0), group.node->getGroupRadius(), 1e-9);
    EXPECT_NEAR(std::sqrt(152.0), group.node->getBoundingSphereDiameter(), 1e-9);
}

TEST(MultipleElementsSelection, ATranslationMovesEveryMemberByTheSameVectorEvenWhenRefused)
{
    Group group;
    const Matrix4 before = group.b->getTransformMatrix();
    *group.node += Matrix4::translation(1.0, 0.0, 0.0);
    expectNear(Matrix4::translation(1.0, 0.0, 0.0), group.a->getTransformMatrix());
    expectNear(Matrix4::translation(1.0, 0.0, 0.0) * before, group.b->getTransformMatrix());
    EXPECT_EQ(Vector4(6.0, 0.0, 0.0, 1.0), group.node->getTransformMatrix().getColumn(3));

    EventRecorder veto{SCENE_ELEMENT_TRANSFORM_STARTING};
    veto.onEvent = [](const qel::main::Event* event) { *static_cast<bool*>(event->getData()) = false; };
    *group.node += Matrix4::translation(0.0, 2.0, 0.0);
    EXPECT_EQ(Vector4(6.0, 0.0, 0.0, 1.0), group.node->getTransformMatrix().getColumn(3));
    expectNear(Matrix4::translation(1.0, 2.0, 0.0), group.a->getTransformMatrix());
}

TEST(MultipleElementsSelection, ARotationTurnsTheMembersAboutTheGroupCentre)
{
    Group group;
    *group.node += turnAboutZ(90.0);
    expectNear(Matrix4::translation(5.0, -5.0, 0.0) * turnAboutZ(90.0), group.a->getTransformMatrix());
    expectNear(Matrix4::translation(5.0, 5.0, 0.0) * turnAboutZ(180.0), group.b->getTransformMatrix());
}

TEST(MultipleElementsSelection, AMoveOfTheGroupTellsTheMembersAndThenTheGroup)
{
    Group group;
    EventRecorder events{SCENE_ELEMENT_TRANSFORM_START, SCENE_ELEMENT_MULTIPLE_TRANSFORM_START,
                         SCENE_ELEMENT_TRANSFORM_FINISH, SCENE_ELEMENT_MULTIPLE_TRANSFORM_FINISH};
    group.node->transformStart(false);
    group.node->transformFinish(nullptr);
    EXPECT_EQ((QStringList{"SCENE_ELEMENT_TRANSFORM_START", "SCENE_ELEMENT_MULTIPLE_TRANSFORM_START",
                           "SCENE_ELEMENT_TRANSFORM_FINISH", "SCENE_ELEMENT_TRANSFORM_FINISH",
                           "SCENE_ELEMENT_TRANSFORM_FINISH", "SCENE_ELEMENT_MULTIPLE_TRANSFORM_FINISH"}),
              events.names());
    EXPECT_EQ(group.node.get(), events.records[1].source);
    EXPECT_EQ(group.node.get(), events.records[1].data);
    EXPECT_EQ(group.a.get(), events.records[2].source);
    EXPECT_EQ(group.node.get(), events.records[2].data);
    EXPECT_EQ(nullptr, events.records[5].data);
}
