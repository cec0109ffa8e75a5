#pragma once

#include "kernel/math/box4.h"
#include "kernel/math/matrix.h"
#include "kernel/math/numerictraits.h"
#include "kernel/math/vector.h"
#include "kernel/util/zobservedclass.h"
#include "kernel/util/zpointer.h"

#include <QCoreApplication>
#include <QPointer>
#include <QString>
#include <list>

class QWidget;
class QXmlStreamReader;
class QXmlStreamWriter;

namespace qel {
namespace io {
class ZTarFile;
}
namespace main {
class Memento;
}
namespace scene {

class Scene;
class SceneElementMemento;

// A node of the scene tree and the base of everything in a scene. Elements are always
// held by ZPointer: a parent and its children keep each other alive until removeChild
// breaks the link. An element has no lock of its own; tree changes that come through
// the scene run under the scene's lock.
class SceneElement : public util::ZObservedClass
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneElement)

public:
    typedef math::Matrix<math::zReal, 4, 4> Matrix4;
    typedef math::Vector<math::zReal, 3> Vector3;
    typedef math::Vector<math::zReal, 4> Vector4;
    typedef math::Box4<math::zReal> Box;
    typedef util::ZPointer<SceneElement> Pointer;
    typedef std::list<Pointer> ElementList;

    // Payload of informObservers: the value itself, cast to a pointer.
    enum CHANGECAUSE { CHANGE_TRANSFORM = 1, CHANGE_PROPERTY = 2 };

    explicit SceneElement(const QString& name);
    ~SceneElement() override;

    // Virtual operations; their order is part of the element's binary interface.
    virtual QWidget* getCustomGUI();
    // The type's key in SceneElementFactory.
    virtual QString getTypeName() const = 0;
    virtual void setVisible(bool visible);
    virtual void initialize();
    // Draws in the parent's frame; the drawer nests the parents' matrices.
    virtual void draw();
    virtual Matrix4 getCompleteTransformMatrix() const;
    virtual Matrix4 getFutureCompleteTransformMatrix() const;
    virtual void saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort);
    virtual void loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort);
    virtual void setTransformMatrix(const Matrix4& matrix);
    // A move that listeners of SCENE_ELEMENT_TRANSFORM_STARTING may refuse.
    virtual void operator+=(const Matrix4& matrix);
    virtual void transformStart(bool takeMemento);
    // Callers pass null; children are told with the element that started the move.
    virtual void transformFinish(SceneElement* initiator);
    virtual void addChild(SceneElement* child, bool setParent = true);
    virtual void removeChild(SceneElement* child);

    // Templates, so that a ZPointer of any element type picks these without ambiguity.
    template <class T>
    void addChild(const util::ZPointer<T>& child, bool setParent = true)
    {
        addChild(static_cast<SceneElement*>(child.get()), setParent);
    }
    template <class T>
    void removeChild(const util::ZPointer<T>& child)
    {
        removeChild(static_cast<SceneElement*>(child.get()));
    }

    // Tree.
    void clearChilds();
    // The given children first, in the given order and as often as given; the others keep
    // their order behind them.
    void reorderChilds(const ElementList& order);
    void updateChildAParentSceneElementIsAModifier(SceneElement* child) const;
    Pointer& getParentSceneElement() { return m_parent; }
    Pointer getParentSceneElement() const { return m_parent; }
    ElementList* getChilds() { return &m_childs; }
    const ElementList* getChilds() const { return &m_childs; }

    // Searches run depth-first in child order; the element itself is never a candidate.
    Pointer findChildWithName(const QString& name, bool recursive) const;
    Pointer findFirstChildOfType(const QString& type, bool recursive);
    SceneElement* findFirstChildOfType(const QString& type, bool recursive) const;
    ElementList findAllChildsOfType(const QString& type, bool recursive) const;
    Pointer findFirstParentOfType(const QString& type);
    SceneElement* findFirstParentOfType(const QString& type) const;
    bool hasAsChild(const SceneElement* child, bool recursive) const;
    template <class T>
    bool hasAsChild(const util::ZPointer<T>& child, bool recursive) const
    {
        return hasAsChild(static_cast<const SceneElement*>(child.get()), recursive);
    }
    bool isChildOf(const SceneElement* parent) const;
    template <class T>
    bool isChildOf(const util::ZPointer<T>& parent) const
    {
        return isChildOf(static_cast<const SceneElement*>(parent.get()));
    }

    // Properties.
    QString getName() const { return m_name; }
    void setName(const QString& name);
    void showBoundingBox(bool show);
    double getOpacity() const { return m_opacity; }
    void setOpacity(double opacity);
    void setFocused(bool focused) { m_isFocused = focused; }
    void triggerPropertyChange() { setChanged(CHANGE_PROPERTY); }

    bool isBoundingBoxVisible() const { return m_isBoundingBoxVisible; }
    bool hasBoundingBox() const { return m_hasBoundingBox; }
    bool hasScalingFactor() const { return m_hasScalingFactor; }
    bool hasCustomGUI() const { return m_hasCustomGUI; }
    bool isViewOrientationEnabled() const { return m_isViewOrientationEnabled; }
    bool isAParentNode() const { return m_isAParentNode; }
    bool isFocusable() const { return m_isFocusable; }
    bool shouldDrawChilds() const { return m_shouldDrawChilds; }
    bool isInitialized() const { return m_isInitialized; }
    bool isModifier() const { return m_isModifier; }
    bool isSerializable() const { return m_isSerializable; }
    bool firesChildEvents() const { return m_firesChildEvents; }
    bool isOriginChangeable() const { return m_isOriginChangeable; }
    bool isInternal() const { return m_isInternal; }
    bool isManipulator() const { return m_isManipulator; }
    bool isIntersectable() const { return m_isIntersectable; }
    bool isFocused() const { return m_isFocused; }
    bool isTransformable() const { return m_isTransformable; }
    bool isReparentable() const { return m_isReparentable; }
    bool isVisible() const { return m_isVisible; }
    bool forcedVisible() const { return m_forcedVisible; }
    bool parentIsModifier() const { return m_parentIsModifier; }

    // Bounding volume. The scaled box is cached until the scaling factor changes.
    Box& getBoundingBox(bool scaled);
    Box getBoundingBox(bool scaled) const;
    double& getBoundingSphereDiameter() { return m_boundingSphereDiameter; }
    // Ray test against the 12 triangles of the transformed box; t gets the ray parameter
    // of the last triangle tested.
    bool intersect(const Vector4& rayStart, const Vector4& rayEnd, double* t);

    // Transform pipeline: past, current and future transform, the origin (pivot) and the
    // scene's scaling factor. The complete matrix is transform * origin (* scale).
    const Matrix4& getTransformMatrix() const { return m_transformMatrix; }
    const Matrix4& getFutureTransformMatrix() const { return m_futureTransformMatrix; }
    const Matrix4& getPastTransformMatrix() const { return m_pastTransformMatrix; }
    const Matrix4& getOrigin() const { return m_originMatrix; }
    Vector4 getCenter() const { return m_transformMatrix.getColumn(3); }
    Matrix4 modifyToCompleteTransformMatrix(const Matrix4& matrix) const;
    Matrix4 modifyToTransformMatrix(const Matrix4& matrix) const;
    // Moves the origin only, about the element's position; nobody is told.
    void operator*=(const Matrix4& matrix);
    // Absolute position and orientation (radians), through the vetoable operator+=.
    void translate(const Vector3& position);
    void translate(const Vector4& position);
    void translate(double x, double y, double z);
    void rotate(const Vector3& axis, double angle);
    void rotate(const Vector4& axis, double angle);
    void rotate(double x, double y, double z, double angle);
    // The second matrix is not used.
    void rotateOrigin(const Matrix4& rotation, const Matrix4& unused);
    void setOrigin(const Matrix4& origin);
    // Moves the pivot to the position without moving the element on the screen.
    void setOriginPosition(const Vector4& position);
    void setOriginPosition(double x, double y, double z);
    void resetOriginPosition();
    double getScalingFactor() const { return m_scalingFactor; }
    void setScalingFactor(double factor);

    // Undo: a memento of this element and its subtree (owned by the caller).
    main::Memento* getMemento();

protected:
    // The element's own drawing in its local frame.
    virtual void drawGL() = 0;
    virtual void initializeGL() = 0;
    virtual QWidget* createCustomGUI();
    virtual QString getCustomTitle() const;
    virtual void setChanged(CHANGECAUSE cause);
    virtual void transformFinished(SceneElement* initiator);
    virtual void setFutureTransform(const Matrix4& matrix);
    virtual void shiftMatrices();

    // The move of operator+=: false when it was refused because its matrix would not be
    // usable (logged; nothing changed), true when it was made or a listener vetoed it.
    bool moveBy(const Matrix4& matrix);
    // What a move by the matrix would make of the transform (the future matrix).
    Matrix4 movedBy(const Matrix4& matrix) const;
    // Whether a matrix may become the transform or the origin; a refusal is logged as one
    // line naming the element.
    bool acceptsTransform(const Matrix4& transform, const char* function) const;
    bool acceptsOrigin(const Matrix4& origin, const char* function) const;

    // The twelve edges of a box as GL lines, in the current colour and state.
    static void drawBoxEdges(const Box& box);

    // Adds a memento of this element to the parent's list, or makes it the top one when
    // there is no parent, then does the same for the children. Returns the top memento.
    main::Memento* retrieveMemento(main::Memento* parent);

    QString m_name;
    bool m_isBoundingBoxVisible = false;
    bool m_hasBoundingBox = false;
    bool m_hasScalingFactor = false;
    bool m_hasCustomGUI = false;
    bool m_isViewOrientationEnabled = true;
    bool m_isAParentNode = false;
    bool m_isFocusable = true;
    bool m_shouldDrawChilds = true;
    bool m_isInitialized = false;
    bool m_isModifier = false;
    bool m_isSerializable = false;
    bool m_firesChildEvents = true;
    bool m_isOriginChangeable = false;
    bool m_isInternal = false;
    bool m_isManipulator = false;
    bool m_isIntersectable = false;
    bool m_isFocused = false;
    bool m_isTransformable = true;
    bool m_isReparentable = true;
    bool m_isVisible = true;
    bool m_forcedVisible = false;
    double m_opacity = 1.0;
    double m_scalingFactor = 1.0;
    QPointer<QWidget> m_customGUI;
    bool m_parentIsModifier = false;
    Pointer m_parent;
    ElementList m_childs;
    // center.w of 0 means not computed yet.
    Box m_scaledBoundingBox;
    Box m_rawBoundingBox;
    double m_boundingSphereDiameter = 0.0;

    Matrix4 m_transformMatrix;
    Matrix4 m_futureTransformMatrix;
    Matrix4 m_pastTransformMatrix;
    Matrix4 m_originMatrix;

private:
    // Restores the origin without announcing it.
    friend class SceneElementMemento;

    SceneElement(const SceneElement&) = delete;
    SceneElement& operator=(const SceneElement&) = delete;

    void fire(unsigned long id, void* data, void* source);
    bool holdsChild(const SceneElement* child) const;
    Matrix4 getScalingMatrix() const;
    Matrix4 completeMatrix(const Matrix4& transform, const Matrix4& origin) const;
    Matrix4 originMovedBy(const Matrix4& matrix) const;
    bool acceptsMatrix(const Matrix4& changed, const Matrix4& transform, const Matrix4& origin, const char* what,
                       const char* function) const;
    Matrix4 getRotation() const;
    Box computeScaledBoundingBox() const;
    void drawBoundingBoxOutline();
    static bool intersectTriangle(const Vector4& a, const Vector4& b, const Vector4& c, const Vector4& rayStart,
                                  const Vector4& rayEnd, double* t);
    static void writeMatrix(QXmlStreamWriter* writer, const QString& tag, const Matrix4& matrix);
    static void readMatrix(QXmlStreamReader* reader, const QString& tag, Matrix4& matrix);
};

} // namespace scene
} // namespace qel
