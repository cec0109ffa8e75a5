#include "module_scene/multipleelementsselection.h"

#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/math/numerictraits.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/sceneevents.h"

#include <GL/gl.h>
#include <cmath>

namespace qel {
namespace scene {

const QString MultipleElementsSelection::TypeName = QStringLiteral("MultipleElementsSelection");

namespace {

const SceneElementFactory::Register registration(MultipleElementsSelection::TypeName,
                                                 &MultipleElementsSelection::createElement);

const int SphereSlices = 16;
const int SphereStacks = 8;

void fireEvent(unsigned long id, void* data, void* source)
{
    main::Event event(id, data, source, false);
    main::EventManager::getInstance()->fireEvent(event);
}

} // namespace

MultipleElementsSelection::MultipleElementsSelection() : SceneElement(TypeName)
{
    m_hasBoundingBox = false;
    m_isViewOrientationEnabled = true;
    m_isAParentNode = false;
    m_isFocusable = true;
    m_shouldDrawChilds = false;
    m_isTransformable = true;
    m_isReparentable = false;
    m_firesChildEvents = false;
    m_isInternal = true;
}

SceneElement* MultipleElementsSelection::createElement()
{
    return new MultipleElementsSelection;
}

QString MultipleElementsSelection::getTypeName() const
{
    return TypeName;
}

// A move refused as unusable moves no member either: each would be refused on its own.
void MultipleElementsSelection::operator+=(const Matrix4& matrix)
{
    if (!moveBy(matrix))
        return;
    const Matrix4 centre = Matrix4::translation(m_transformMatrix(0, 3), m_transformMatrix(1, 3),
                                                m_transformMatrix(2, 3));
    const Matrix4 aboutCentre = (centre * matrix) * centre.getInverse();
    const ElementList members = m_childs;
    for (const Pointer& member : members)
        member->setTransformMatrix(aboutCentre * member->getTransformMatrix());
}

void MultipleElementsSelection::transformStart(bool takeMemento)
{
    SceneElement::transformStart(takeMemento);
    fireEvent(SCENE_ELEMENT_MULTIPLE_TRANSFORM_START, this, this);
}

void MultipleElementsSelection::transformFinish(SceneElement* initiator)
{
    SceneElement::transformFinish(initiator);
    fireEvent(SCENE_ELEMENT_MULTIPLE_TRANSFORM_FINISH, initiator, this);
}

void MultipleElementsSelection::addChild(SceneElement* child, bool setParent)
{
    if (!child->isTransformable())
        return;
    SceneElement::addChild(child, setParent);
    groupBoundingBox += boxOf(child);
    update();
}

void MultipleElementsSelection::removeChild(SceneElement* child)
{
    SceneElement::removeChild(child);
    Box merged;
    for (const Pointer& member : m_childs)
        merged += boxOf(member);
    groupBoundingBox = merged;
    update();
}

void MultipleElementsSelection::replaceMembers(const ElementList& members)
{
    ElementList old;
    old.swap(m_childs);
    for (const Pointer& member : old)
        updateChildAParentSceneElementIsAModifier(member.get());
    Box merged;
    for (const Pointer& member : members) {
        if (!member->isTransformable())
            continue;
        m_childs.push_back(member);
        merged += boxOf(member);
    }
    groupBoundingBox = merged;
    update();
}

void MultipleElementsSelection::update()
{
    typedef math::NumericTraits<math::zReal> Traits;
    const Vector4& centre = groupBoundingBox.center;

    groupRadius = 0.0;
    for (const Pointer& member : m_childs) {
        const Box box = boxOf(member);
        for (const Vector4& corner : box.corners) {
            Vector4 difference;
            for (int i = 0; i < 4; ++i)
                difference[i] = math::snap(centre[i] - corner[i]);
            groupRadius = std::max(groupRadius, difference.length());
        }
    }

    m_rawBoundingBox = groupBoundingBox;
    m_transformMatrix = Matrix4::translation(centre.x(), centre.y(), centre.z());

    // The box goes into the node's own frame, centred on its position.
    for (int i = 0; i < 3; ++i)
        m_rawBoundingBox.center[i] = math::snap(m_rawBoundingBox.center[i] - centre[i]);
    m_rawBoundingBox.center.w() = Traits::One;
    m_rawBoundingBox.updateCorners();
    m_boundingSphereDiameter = m_rawBoundingBox.size.length();
}

void MultipleElementsSelection::drawGL()
{
    if (m_childs.size() < 2)
        return;
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glColor4d(0.0, 1.0, 0.7, 1.0);
    drawWireSphere();
    glPopAttrib();
}

void MultipleElementsSelection::initializeGL()
{
}

// Rings at the inner stacks, then one meridian per slice from pole to pole.
void MultipleElementsSelection::drawWireSphere() const
{
    double sliceSin[SphereSlices + 1], sliceCos[SphereSlices + 1];
    for (int j = 0; j <= SphereSlices; ++j) {
        const double angle = 2.0 * M_PI * j / SphereSlices;
        sliceSin[j] = std::sin(angle);
        sliceCos[j] = std::cos(angle);
    }
    double stackSin[SphereStacks + 1], stackCos[SphereStacks + 1];
    for (int t = 0; t <= SphereStacks; ++t) {
        const double angle = M_PI * t / SphereStacks;
        stackSin[t] = std::sin(angle);
        stackCos[t] = std::cos(angle);
    }
    auto vertex = [this](double x, double y, double z) {
        glNormal3d(x, y, z);
        glVertex3d(x * groupRadius, y * groupRadius, z * groupRadius);
    };
    for (int t = 1; t < SphereStacks; ++t) {
        glBegin(GL_LINE_LOOP);
        for (int j = 0; j <= SphereSlices; ++j)
            vertex(sliceCos[j] * stackSin[t], sliceSin[j] * stackSin[t], stackCos[t]);
        glEnd();
    }
    for (int j = 0; j < SphereSlices; ++j) {
        glBegin(GL_LINE_STRIP);
        for (int t = 0; t <= SphereStacks; ++t)
            vertex(sliceCos[j] * stackSin[t], sliceSin[j] * stackSin[t], stackCos[t]);
        glEnd();
    }
}

// The member's box in its parent's space.
SceneElement::Box MultipleElementsSelection::boxOf(const SceneElement* member)
{
    return member->getBoundingBox(true).transform(member->getTransformMatrix() * member->getOrigin());
}

} // namespace scene
} // namespace qel
