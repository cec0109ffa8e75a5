#include "module_scene/sceneelement.h"

#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/undoredomanager.h"
#include "kernel/math/quaternion.h"
#include "module_scene/sceneelementmemento.h"
#include "module_scene/sceneevents.h"

#include <QWidget>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <GL/gl.h>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_set>

namespace qel {
namespace scene {

namespace {

typedef math::NumericTraits<math::zReal> Traits;
typedef math::Quaternion<math::zReal> Quaternion;

// The 12 triangles of a box, as corner indices; the order decides which hit counts.
const int BoxTriangles[12][3] = {{0, 1, 2}, {2, 3, 0}, {7, 6, 5}, {5, 4, 7}, {0, 4, 5}, {5, 1, 0},
                                 {1, 5, 6}, {6, 2, 1}, {2, 6, 7}, {7, 3, 2}, {3, 7, 4}, {4, 0, 3}};

// The outline: one strip, then three single edges.
const int OutlineStrip[10] = {0, 1, 2, 3, 0, 6, 7, 4, 5, 6};
const int OutlineEdges[3][2] = {{1, 7}, {2, 4}, {3, 5}};

} // namespace

SceneElement::SceneElement(const QString& name)
    : m_name(name),
      m_transformMatrix(Matrix4::identity()),
      m_futureTransformMatrix(Matrix4::identity()),
      m_pastTransformMatrix(Matrix4::identity()),
      m_originMatrix(Matrix4::identity())
{
}

// Derived parts are gone already when the events run: handlers may use the pointer as a key only.
SceneElement::~SceneElement()
{
    fire(SCENE_ELEMENT_BEFORE_DELETED, nullptr, this);
    if (m_customGUI)
        m_customGUI->deleteLater();
    fire(SCENE_ELEMENT_DELETED, nullptr, this);
}

QWidget* SceneElement::getCustomGUI()
{
    if (m_customGUI)
        return m_customGUI;
    m_customGUI = createCustomGUI();
    if (m_customGUI)
        m_customGUI->setWindowTitle(getCustomTitle());
    return m_customGUI;
}

void SceneElement::setVisible(bool visible)
{
    if (m_isVisible == visible)
        return;
    m_isVisible = visible;
    setChanged(CHANGE_PROPERTY);
    fire(visible ? SCENE_ELEMENT_SHOWN : SCENE_ELEMENT_HIDDEN, this, this);
}

void SceneElement::initialize()
{
    if (m_isInitialized)
        return;
    initializeGL();
    if (m_boundingSphereDiameter != 0.0) {
        m_isInitialized = true;
        return;
    }
    double largest = 0.0;
    for (const Vector4& corner : m_rawBoundingBox.corners)
        largest = std::max(largest, (corner - m_rawBoundingBox.center).length());
    m_boundingSphereDiameter = 2.0 * largest;
    m_isInitialized = true;
}

void SceneElement::draw()
{
    if (!m_isVisible && !m_forcedVisible)
        return;
    glPushMatrix();
    glMultMatrixd(m_transformMatrix.data());
    glMultMatrixd(m_originMatrix.data());
    if (!m_isBoundingBoxVisible) {
        drawGL();
    } else if (m_hasBoundingBox) {
        drawBoundingBoxOutline();
    } else {
        log::Logger::log(2000, "module_scene/sceneelement", 130, "qel::scene::SceneElement::draw", nullptr,
                         "Element has no bounding box!");
    }
    glPopMatrix();
}

void SceneElement::drawBoundingBoxOutline()
{
    const Box& box = getBoundingBox(true);
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glColor3d(1.0, 0.0, 1.0);
    drawBoxEdges(box);
    glPopAttrib();
}

void SceneElement::drawBoxEdges(const Box& box)
{
    glBegin(GL_LINE_STRIP);
    for (int corner : OutlineStrip)
        glVertex3dv(box.corners[corner].data());
    glEnd();
    glBegin(GL_LINES);
    for (const auto& edge : OutlineEdges) {
        glVertex3dv(box.corners[edge[0]].data());
        glVertex3dv(box.corners[edge[1]].data());
    }
    glEnd();
}

SceneElement::Matrix4 SceneElement::getCompleteTransformMatrix() const
{
    return modifyToCompleteTransformMatrix(m_transformMatrix);
}

SceneElement::Matrix4 SceneElement::getFutureCompleteTransformMatrix() const
{
    return modifyToCompleteTransformMatrix(m_futureTransformMatrix);
}

// The base writes its own elements and leaves the abort flag to the payloads.
void SceneElement::saveTo(QXmlStreamWriter* writer, io::ZTarFile*, const bool&)
{
    writer->writeTextElement("name", m_name);
    writer->writeTextElement("opacity", QString::number(m_opacity, 'g', 6));
    writer->writeTextElement("visible", QString::number(m_isVisible ? 1 : 0));
    writer->writeTextElement("boundingboxshown", QString::number(m_isBoundingBoxVisible ? 1 : 0));
    writeMatrix(writer, "transform", m_transformMatrix);
    writeMatrix(writer, "origin", m_originMatrix);
}

// Fields are written directly: no setter runs and nothing is told.
void SceneElement::loadFrom(QXmlStreamReader* reader, io::ZTarFile*, Scene*, bool&)
{
    const QStringRef tag = reader->name();
    if (tag == QLatin1String("name")) {
        m_name = reader->readElementText();
    } else if (tag == QLatin1String("opacity")) {
        m_opacity = reader->readElementText().toFloat();
    } else if (tag == QLatin1String("visible")) {
        m_isVisible = reader->readElementText().toInt() != 0;
    } else if (tag == QLatin1String("boundingboxshown")) {
        m_isBoundingBoxVisible = reader->readElementText().toInt() != 0;
    } else if (tag == QLatin1String("transform")) {
        readMatrix(reader, "transform", m_transformMatrix);
        m_futureTransformMatrix = m_transformMatrix;
    } else if (tag == QLatin1String("origin")) {
        readMatrix(reader, "origin", m_originMatrix);
    }
}

void SceneElement::writeMatrix(QXmlStreamWriter* writer, const QString& tag, const Matrix4& matrix)
{
    writer->writeStartElement(tag);
    for (int row = 0; row < 4; ++row) {
        for (int col = 0; col < 4; ++col) {
            writer->writeStartElement("entry");
            writer->writeAttribute("col", QString::number(col));
            writer->writeAttribute("row", QString::number(row));
            writer->writeCharacters(QString::number(matrix(row, col), 'g', 16));
            writer->writeEndElement();
        }
    }
    writer->writeEndElement();
}

// Entries go to place col * 4 + row; one that falls outside the matrix is dropped.
void SceneElement::readMatrix(QXmlStreamReader* reader, const QString& tag, Matrix4& matrix)
{
    while (!reader->atEnd()) {
        reader->readNext();
        if (reader->isEndElement() && reader->name() == tag)
            return;
        if (!reader->isStartElement() || reader->name() != QLatin1String("entry"))
            continue;
        const int col = reader->attributes().value("col").toInt();
        const int row = reader->attributes().value("row").toInt();
        const float value = reader->readElementText().toFloat();
        const int place = col * 4 + row;
        if (col < 4 && row < 4 && place >= 0 && place < 16)
            matrix[place] = value;
    }
}

void SceneElement::setTransformMatrix(const Matrix4& matrix)
{
    if (!m_isTransformable)
        log::Logger::log(2000, "module_scene/sceneelement", 847, "qel::scene::SceneElement::setTransformMatrix",
                         nullptr, "Element %s is not transformable", qPrintable(m_name));
    if (!acceptsTransform(matrix, "qel::scene::SceneElement::setTransformMatrix"))
        return;
    m_pastTransformMatrix = m_transformMatrix;
    m_transformMatrix = matrix;
    m_futureTransformMatrix = matrix;
    setChanged(CHANGE_TRANSFORM);
}

void SceneElement::operator+=(const Matrix4& matrix)
{
    moveBy(matrix);
}

// The move is checked before anything changes: a refused one leaves all matrices as they
// are, the future one too.
bool SceneElement::moveBy(const Matrix4& matrix)
{
    if (!acceptsTransform(movedBy(matrix), "qel::scene::SceneElement::operator+="))
        return false;
    setFutureTransform(matrix);
    bool accept = true;
    fire(SCENE_ELEMENT_TRANSFORM_STARTING, &accept, this);
    if (!accept)
        return true;
    shiftMatrices();
    setChanged(CHANGE_TRANSFORM);
    return true;
}

bool SceneElement::acceptsTransform(const Matrix4& transform, const char* function) const
{
    return acceptsMatrix(transform, transform, m_originMatrix, "transform", function);
}

bool SceneElement::acceptsOrigin(const Matrix4& origin, const char* function) const
{
    return acceptsMatrix(origin, m_transformMatrix, origin, "origin", function);
}

namespace {

// GL, the views and the saved scene take matrices in single precision: an entry beyond
// its range turns into an infinity there, and into NaN in the next product.
bool fitsSinglePrecision(const SceneElement::Matrix4& matrix)
{
    const double largest = std::numeric_limits<float>::max();
    for (int i = 0; i < 16; ++i) {
        if (!(std::fabs(matrix[i]) <= largest))
            return false;
    }
    return true;
}

} // namespace

// Whatever is drawn, picked or inverted later must stay finite: the new matrix must be
// finite and invertible, and so must the complete matrix it gives with the other one.
bool SceneElement::acceptsMatrix(const Matrix4& changed, const Matrix4& transform, const Matrix4& origin,
                                 const char* what, const char* function) const
{
    const char* fault = nullptr;
    if (!changed.isFinite() || !fitsSinglePrecision(changed))
        fault = "is not finite";
    else if (!changed.isInvertible() || !completeMatrix(transform, origin).isInvertible())
        fault = "has no finite inverse";
    if (!fault)
        return true;
    log::Logger::log(2000, "module_scene/sceneelement", __LINE__, function, nullptr,
                     QStringLiteral("The %1 of '%2' was refused: its new matrix %3")
                         .arg(QLatin1String(what), m_name, QLatin1String(fault)));
    return false;
}

// The memento is taken before listeners hear of the move, and stored after them.
void SceneElement::transformStart(bool takeMemento)
{
    main::Memento* memento = takeMemento ? retrieveMemento(nullptr) : nullptr;
    fire(SCENE_ELEMENT_TRANSFORM_START, this, this);
    if (memento)
        main::UndoRedoManager::getInstance()->addMemento(memento);
}

void SceneElement::transformFinish(SceneElement* initiator)
{
    if (initiator == this)
        return;
    SceneElement* told = initiator ? initiator : this;
    const ElementList childs = m_childs;
    for (const Pointer& child : childs)
        child->transformFinish(told);
    fire(SCENE_ELEMENT_TRANSFORM_FINISH, initiator, this);
    transformFinished(told);
}

void SceneElement::transformFinished(SceneElement* initiator)
{
    if (!initiator) {
        const ElementList childs = m_childs;
        for (const Pointer& child : childs)
            child->transformFinished(this);
    }
    fire(SCENE_ELEMENT_TRANSFORM_FINISHED, initiator, this);
}

void SceneElement::addChild(SceneElement* child, bool setParent)
{
    if (child->m_parent.get() == this && holdsChild(child))
        return;
    // The old parent's list may hold the child's last reference.
    const Pointer keepAlive(child);
    bool moved = false;
    if (setParent) {
        if (!child->m_parent.isNull() && child->m_parent.get() != this) {
            child->m_parent->removeChild(child);
            moved = true;
        }
        child->m_parent = this;
        updateChildAParentSceneElementIsAModifier(child);
    }
    m_childs.push_back(child);
    if (!m_firesChildEvents)
        return;
    fire(SCENE_ELEMENT_CHILD_ADDED, child, this);
    if (moved)
        fire(SCENE_ELEMENTS_REPARENTED, child, this);
}

void SceneElement::removeChild(SceneElement* child)
{
    // The list may hold the child's last reference; it must live until the event is out.
    const Pointer keepAlive(child);
    if (child->m_parent.get() == this)
        child->m_parent = nullptr;
    m_childs.remove_if([child](const Pointer& held) { return held.get() == child; });
    // The removed child keeps the value of its old place until it is added elsewhere.
    updateChildAParentSceneElementIsAModifier(child);
    if (m_firesChildEvents)
        fire(SCENE_ELEMENT_CHILD_REMOVED, child, this);
}

void SceneElement::clearChilds()
{
    while (!m_childs.empty())
        removeChild(m_childs.front().get());
}

// Every entry of the order that is a child goes in as given, a repeated one as often as it
// is named; the children it doesn't name follow in their present order.
void SceneElement::reorderChilds(const ElementList& order)
{
    std::unordered_set<const SceneElement*> present;
    for (const Pointer& child : m_childs)
        present.insert(child.get());
    std::unordered_set<const SceneElement*> listed;
    ElementList reordered;
    for (const Pointer& element : order) {
        if (!present.count(element.get()))
            continue;
        reordered.push_back(element);
        listed.insert(element.get());
    }
    for (const Pointer& child : m_childs) {
        if (listed.insert(child.get()).second)
            reordered.push_back(child);
    }
    m_childs = reordered;
    setChanged(CHANGE_PROPERTY);
    fire(SCENE_ELEMENT_CHILDS_REORDERED, nullptr, this);
}

void SceneElement::updateChildAParentSceneElementIsAModifier(SceneElement* child) const
{
    if (!child)
        return;
    for (const SceneElement* element = this; element; element = element->m_parent.get()) {
        if (element->m_isModifier) {
            child->m_parentIsModifier = true;
            return;
        }
    }
    child->m_parentIsModifier = false;
}

SceneElement::Pointer SceneElement::findChildWithName(const QString& name, bool recursive) const
{
    for (const Pointer& child : m_childs) {
        if (child->m_name == name)
            return child;
        if (recursive) {
            Pointer found = child->findChildWithName(name, true);
            if (!found.isNull())
                return found;
        }
    }
    return Pointer();
}

SceneElement::Pointer SceneElement::findFirstChildOfType(const QString& type, bool recursive)
{
    return Pointer(static_cast<const SceneElement*>(this)->findFirstChildOfType(type, recursive));
}

SceneElement* SceneElement::findFirstChildOfType(const QString& type, bool recursive) const
{
    for (const Pointer& child : m_childs) {
        if (child->getTypeName() == type)
            return child.get();
        if (recursive) {
            SceneElement* found = static_cast<const SceneElement*>(child.get())->findFirstChildOfType(type, true);
            if (found)
                return found;
        }
    }
    return nullptr;
}

SceneElement::ElementList SceneElement::findAllChildsOfType(const QString& type, bool recursive) const
{
    ElementList found;
    for (const Pointer& child : m_childs) {
        if (child->getTypeName() == type)
            found.push_back(child);
        if (recursive)
            found.splice(found.end(), child->findAllChildsOfType(type, true));
    }
    return found;
}

SceneElement::Pointer SceneElement::findFirstParentOfType(const QString& type)
{
    return Pointer(static_cast<const SceneElement*>(this)->findFirstParentOfType(type));
}

SceneElement* SceneElement::findFirstParentOfType(const QString& type) const
{
    for (SceneElement* element = m_parent.get(); element; element = element->m_parent.get()) {
        if (element->getTypeName() == type)
            return element;
    }
    return nullptr;
}

bool SceneElement::hasAsChild(const SceneElement* child, bool recursive) const
{
    for (const Pointer& held : m_childs) {
        if (held == child)
            return true;
        if (recursive && held->hasAsChild(child, true))
            return true;
    }
    return false;
}

bool SceneElement::isChildOf(const SceneElement* parent) const
{
    return parent && parent->hasAsChild(this, false);
}

void SceneElement::setName(const QString& name)
{
    if (m_name == name)
        return;
    QString oldName = m_name;
    m_name = name;
    if (m_customGUI)
        m_customGUI->setWindowTitle(getCustomTitle());
    setChanged(CHANGE_PROPERTY);
    fire(SCENE_ELEMENT_RENAMED, &oldName, this);
}

void SceneElement::showBoundingBox(bool show)
{
    if (m_isBoundingBoxVisible == show)
        return;
    m_isBoundingBoxVisible = show;
    setChanged(CHANGE_PROPERTY);
    fire(show ? SCENE_ELEMENT_BBOX_SHOWN : SCENE_ELEMENT_BBOX_HIDDEN, this, nullptr);
}

void SceneElement::setOpacity(double opacity)
{
    m_opacity = opacity;
    setChanged(CHANGE_PROPERTY);
}

SceneElement::Box& SceneElement::getBoundingBox(bool scaled)
{
    if (!m_hasScalingFactor || !scaled)
        return m_rawBoundingBox;
    if (m_scaledBoundingBox.center.w() == Traits::Zero)
        m_scaledBoundingBox = computeScaledBoundingBox();
    return m_scaledBoundingBox;
}

SceneElement::Box SceneElement::getBoundingBox(bool scaled) const
{
    if (!m_hasScalingFactor || !scaled)
        return m_rawBoundingBox;
    if (m_scaledBoundingBox.center.w() != Traits::Zero)
        return m_scaledBoundingBox;
    return computeScaledBoundingBox();
}

// The box transform keeps the size as it is, so the scale goes onto it here.
SceneElement::Box SceneElement::computeScaledBoundingBox() const
{
    Box scaled = m_rawBoundingBox.transform(getScalingMatrix());
    scaled.size *= m_scalingFactor;
    return scaled;
}

bool SceneElement::intersect(const Vector4& rayStart, const Vector4& rayEnd, double* t)
{
    if (!m_isIntersectable)
        return false;
    const Box box = getBoundingBox(true).transform(m_transformMatrix * m_originMatrix);
    for (const auto& triangle : BoxTriangles) {
        if (intersectTriangle(box.corners[triangle[0]], box.corners[triangle[1]], box.corners[triangle[2]], rayStart,
                              rayEnd, t))
            return true;
    }
    return false;
}

bool SceneElement::intersectTriangle(const Vector4& a, const Vector4& b, const Vector4& c, const Vector4& rayStart,
                                     const Vector4& rayEnd, double* t)
{
    const Vector4 normal0 = (b - a).cross(c - a);
    Vector4 normal = normal0;
    normal.normalize();
    const Vector4 direction = rayEnd - rayStart;
    // No guard against a ray parallel to the plane: the infinite or undefined parameter
    // fails the edge tests below.
    const double parameter =
        (math::snap(normal.dot(a)) - math::snap(normal.dot(rayStart))) / math::snap(normal.dot(direction));
    if (t)
        *t = parameter;
    if (parameter < Traits::Zero)
        return false;
    Vector4 hit = rayStart + direction * parameter;
    for (int i = 0; i < 4; ++i)
        hit[i] = math::snap(hit[i]);
    const Vector4* edges[3][2] = {{&a, &b}, {&b, &c}, {&c, &a}};
    for (const auto& edge : edges) {
        const Vector4& u = *edge[0];
        const Vector4& v = *edge[1];
        const float side = static_cast<float>(math::snap((v - u).cross(hit - u).dot(normal0)));
        if (!(side >= 0.0f))
            return false;
    }
    return true;
}

SceneElement::Matrix4 SceneElement::modifyToCompleteTransformMatrix(const Matrix4& matrix) const
{
    return completeMatrix(matrix, m_originMatrix);
}

SceneElement::Matrix4 SceneElement::completeMatrix(const Matrix4& transform, const Matrix4& origin) const
{
    if (!m_hasScalingFactor)
        return transform * origin;
    return (transform * origin) * getScalingMatrix();
}

// Without a scaling factor the origin stays in: only the scaled form inverts the complete matrix.
SceneElement::Matrix4 SceneElement::modifyToTransformMatrix(const Matrix4& matrix) const
{
    if (!m_hasScalingFactor)
        return matrix;
    return (matrix * getScalingMatrix().getInverse()) * m_originMatrix.getInverse();
}

void SceneElement::operator*=(const Matrix4& matrix)
{
    const Matrix4 origin = originMovedBy(matrix);
    if (acceptsOrigin(origin, "qel::scene::SceneElement::operator*="))
        m_originMatrix = origin;
}

SceneElement::Matrix4 SceneElement::originMovedBy(const Matrix4& matrix) const
{
    const Matrix4 rotation = getRotation();
    Matrix4 origin = m_originMatrix;
    origin *= (rotation.getInverse() * matrix) * rotation;
    return origin;
}

void SceneElement::translate(const Vector3& position)
{
    translate(position.x(), position.y(), position.z());
}

void SceneElement::translate(const Vector4& position)
{
    translate(position.x(), position.y(), position.z());
}

void SceneElement::translate(double x, double y, double z)
{
    const double dx = x - m_transformMatrix(0, 3);
    const double dy = y - m_transformMatrix(1, 3);
    const double dz = z - m_transformMatrix(2, 3);
    operator+=(Matrix4::translation(dx, dy, dz));
}

// R inverse * M * R then equals R inverse * matrix(q): the old rotation is replaced.
void SceneElement::rotate(const Vector3& axis, double angle)
{
    const Quaternion wanted = Quaternion::fromAxisAngle(axis.getNormalized(), angle);
    const Quaternion current = Quaternion::fromMatrix(m_transformMatrix);
    operator+=((current.getInverse() * wanted).toMatrix());
}

void SceneElement::rotate(const Vector4& axis, double angle)
{
    rotate(axis.x(), axis.y(), axis.z(), angle);
}

void SceneElement::rotate(double x, double y, double z, double angle)
{
    rotate(Vector3(x, y, z), angle);
}

void SceneElement::rotateOrigin(const Matrix4& rotation, const Matrix4&)
{
    const Matrix4 origin =
        m_originMatrix * m_transformMatrix * rotation * m_transformMatrix.getInverse() * m_originMatrix.getInverse();
    if (!acceptsOrigin(origin, "qel::scene::SceneElement::rotateOrigin"))
        return;
    m_originMatrix = origin;
    setChanged(CHANGE_TRANSFORM);
}

void SceneElement::setOrigin(const Matrix4& origin)
{
    if (!m_isOriginChangeable) {
        log::Logger::log(2000, "module_scene/sceneelement", 187, "qel::scene::SceneElement::setOrigin", nullptr,
                         "Origin of element %s is not changeable!", qPrintable(m_name));
        return;
    }
    if (!acceptsOrigin(origin, "qel::scene::SceneElement::setOrigin"))
        return;
    m_originMatrix = origin;
    setChanged(CHANGE_TRANSFORM);
}

void SceneElement::setOriginPosition(const Vector4& position)
{
    if (!m_isOriginChangeable) {
        log::Logger::log(2000, "module_scene/sceneelement", 200, "qel::scene::SceneElement::setOriginPosition",
                         nullptr, "Origin of element %s is not changeable!", qPrintable(m_name));
        return;
    }
    Vector4 offset = position - m_transformMatrix.getColumn(3);
    for (int i = 0; i < 4; ++i)
        offset[i] = math::snap(offset[i]) * -1.0;
    if (offset.dot(offset) == Traits::Zero)
        return;
    Matrix4 shift = Matrix4::translation(offset.x(), offset.y(), offset.z());
    // Both halves or neither: the pivot alone must not move.
    if (!acceptsOrigin(originMovedBy(shift), "qel::scene::SceneElement::setOriginPosition"))
        return;
    *this *= shift;
    for (int row = 0; row < 3; ++row)
        shift(row, 3) = -shift(row, 3);
    operator+=(shift);
}

void SceneElement::setOriginPosition(double x, double y, double z)
{
    setOriginPosition(Vector4(x, y, z, 1.0));
}

void SceneElement::resetOriginPosition()
{
    setOriginPosition(getCompleteTransformMatrix().getColumn(3));
}

// No event and no setChanged: the scene announces the new global scaling itself.
void SceneElement::setScalingFactor(double factor)
{
    m_scalingFactor = factor;
    if (!m_hasScalingFactor)
        return;
    m_scaledBoundingBox.center.w() = Traits::Zero;
    m_boundingSphereDiameter = getBoundingBox(true).size.length();
}

main::Memento* SceneElement::getMemento()
{
    return retrieveMemento(nullptr);
}

main::Memento* SceneElement::retrieveMemento(main::Memento* parent)
{
    auto* memento = new SceneElementMemento(this, m_transformMatrix, m_originMatrix);
    auto* list = dynamic_cast<SceneElementMemento*>(parent);
    main::Memento* top = memento;
    if (list) {
        list->addChild(memento);
        top = list;
    }
    for (const Pointer& child : m_childs)
        child->retrieveMemento(top);
    return top;
}

QWidget* SceneElement::createCustomGUI()
{
    return nullptr;
}

QString SceneElement::getCustomTitle() const
{
    return tr("%1 [Element setup]").arg(m_name);
}

void SceneElement::setChanged(CHANGECAUSE cause)
{
    informObservers(reinterpret_cast<void*>(static_cast<intptr_t>(cause)));
}

void SceneElement::setFutureTransform(const Matrix4& matrix)
{
    m_futureTransformMatrix = movedBy(matrix);
}

// M acts about the element's position along the parent's axes: T*R becomes T*M*R.
SceneElement::Matrix4 SceneElement::movedBy(const Matrix4& matrix) const
{
    const Matrix4 rotation = getRotation();
    Matrix4 moved = m_transformMatrix;
    moved *= (rotation.getInverse() * matrix) * rotation;
    return moved;
}

void SceneElement::shiftMatrices()
{
    m_pastTransformMatrix = m_transformMatrix;
    m_transformMatrix = m_futureTransformMatrix;
}

void SceneElement::fire(unsigned long id, void* data, void* source)
{
    main::Event event(id, data, source, false);
    main::EventManager::getInstance()->fireEvent(event);
}

bool SceneElement::holdsChild(const SceneElement* child) const
{
    return std::any_of(m_childs.begin(), m_childs.end(),
                       [child](const Pointer& held) { return held.get() == child; });
}

SceneElement::Matrix4 SceneElement::getScalingMatrix() const
{
    return Matrix4::scaling(m_scalingFactor);
}

// The rotation of the current transform, without translation or scale.
SceneElement::Matrix4 SceneElement::getRotation() const
{
    return Quaternion::fromMatrix(m_transformMatrix).toMatrix();
}

} // namespace scene
} // namespace qel
