#pragma once

#include "kernel/util/zobservedclass.h"
#include "kernel/util/zobserver.h"
#include "kernel/util/zpointer.h"
#include "module_scene/sceneelement.h"
#include "module_scene/scenenameindex.h"

#include <QMutex>
#include <QString>
#include <atomic>
#include <boost/function.hpp>
#include <cstdint>
#include <list>
#include <map>
#include <utility>

namespace qel {
namespace main {
class Event;
}
namespace scene {

class SelectedPoint;

// The registry of one scene tree: free names, clipping plane and light numbers, init
// functions, focus and selection, picked points, the locks and the global scale.
// A scene holds a reference to itself through its element observer: dropping the outside
// pointers does not end it, shutDown does (the owner's shutdown path).
class Scene : public util::ZObservedClass
{
public:
    typedef SceneElement::Pointer ElementPointer;
    typedef SceneElement::ElementList ElementList;
    typedef util::ZPointer<SelectedPoint> PointPointer;
    typedef std::list<PointPointer> PointList;
    typedef math::Vector<math::zReal, 4> Vector4;
    typedef boost::function<void(SceneElement*, void*)> InitFunction;

    enum SELECTIONCOMMANDTYPE {
        SELECT_NOTHING = 0,
        SELECT_ELEMENTS = 1,
        SELECT_FACES = 2,
        SELECT_POINTS = 3,
        SELECT_POINTS_FREE = 4
    };
    enum SCALEMODE { SCALE_BY_LARGEST = 1, SCALE_BY_SMALLEST = 2 };
    // Bits of getChangeCause.
    enum CHANGECAUSEBIT { CHANGE_STRUCTURE = 1, CHANGE_ELEMENT = 2 };
    enum OPERATION { ELEMENT_ADDED = 0, ELEMENT_REMOVED = 1 };

    // What informObservers carries for addElement and removeElement.
    struct Notification
    {
        int32_t operation;
        SceneElement* element;
        // Always 0.
        quintptr reserved;
    };

    // Implemented by the element types that hold a number handed out by the scene (the
    // "ClippingPlane" and "Lightsource" types). The scene tells those types by their type
    // key, so that a subclass with a key of its own gets no number.
    class NumberedElement
    {
    public:
        virtual ~NumberedElement() = default;
        virtual int getSceneNumber() const = 0;
        virtual void setSceneNumber(int number) = 0;
    };

    // Implemented by the "Lines" type, whose data depends on the measuring unit and on the
    // points it was loaded with.
    class RecomputableElement
    {
    public:
        virtual ~RecomputableElement() = default;
        virtual void updateData() = 0;
    };

    static const QString ClippingPlaneType;
    static const QString LightSourceType;
    static const QString LinesType;

    Scene();
    ~Scene() override;

    // Empties the scene and ends the reference its observer holds on it: the last outside
    // pointer then deletes it. The scene is unusable afterwards.
    void shutDown();

    // Registry.
    void addElement(SceneElement* element);
    void addElementInternal(SceneElement* element);
    void removeElement(SceneElement* element);
    void removeElementInternal(SceneElement* element);
    void removeElementSubNodesOfType(SceneElement* parent, const QString& type);
    void setRootNode(const ElementPointer& newRoot);
    const ElementPointer& getRootNode() const { return rootNode; }
    const ElementPointer& getSelectionNode() const { return selectionNode; }
    ElementList* getElementList() { return &elementList; }
    ElementPointer getSceneElement(const QString& name) const;
    ElementPointer getFirstSceneElementByType(const QString& type) const;
    ElementList getSceneElementsOfType(const QString& type) const;
    void getAllNodes(const ElementPointer& start, ElementList& out) const;
    bool isExisting(SceneElement* element) const;
    bool isNameAvailable(const QString& name) const;
    void updateToFreeName(SceneElement* element);

    // Init functions: by name one-shot, by type lasting; the before-add ones run while the
    // element is pending, before it is registered.
    void registerInitFunctionForElementName(const QString& name, const InitFunction& function, void* data);
    void registerInitFunctionForElementType(const QString& type, const InitFunction& function, void* data);
    void registerInitFunctionForElementTypeBeforeAdd(const QString& type, const InitFunction& function, void* data);
    void callInitFunctionsForElementName(SceneElement* element);
    void callInitFunctionsForElementType(SceneElement* element);
    void callInitFunctionsForElementTypeBeforeAdd(SceneElement* element);

    // Lifecycle.
    void cleanScene();
    void clearScene();
    bool isClean() const;
    void dumpTree(SceneElement* element = nullptr, int depth = 0) const;
    bool isChanged() const { return changed; }
    void setChanged(bool value) { changed = value; }
    int getChangeCause() const { return static_cast<int>(changeCause.load()); }
    void triggerUpdate();

    // Clipping plane and light numbers.
    int findFreeClippingPlaneNumber() const;
    int findFreeLightSourceNumber() const;
    const bool* getAvailableClippingPlanes() const { return availableClippingPlanes; }
    const bool* getAvailableLightSources() const { return availableLightSources; }

    // Selection modes.
    unsigned int registerSelectionMode(const QString& command, SELECTIONCOMMANDTYPE type);
    void switchSelectionMode(unsigned int id);
    QString getCurrentSelectionCommand() const;
    SELECTIONCOMMANDTYPE getCurrentSelectionType() const;

    // Focus and selection.
    void setFocus(const SceneElement* element);
    const ElementPointer& getFocusedNode() const { return focusedNode; }
    const ElementList& getSelectedElements() const { return selectedElements; }
    bool isElementSelected(const ElementPointer& element) const;

    // Picked points.
    void addSelectedPoint(const Vector4& position, SceneElement* element = nullptr);
    void addSelectedPoint(SelectedPoint* point);
    void removeSelectedPoint(unsigned int index);
    void removeSelectedPoint(SelectedPoint* point);
    void replaceSelectedPoints(const PointList& points);
    void clearSelectedPoints();
    PointList* getSelectedPoints() { return &selectedPoints; }

    // The element lock guards the registry and the tree. The transform and structure locks
    // block nobody: they are counters that controls watch.
    void lock();
    bool tryLock();
    void unlock();
    void transformLock();
    void transformUnlock();
    bool isTransformLocked() const { return transformLocked; }
    void structureLock();
    void structureUnlock();
    bool isStructureLocked() const { return structureLocked; }

    // Units and scale.
    void setMeasuring(double measuring);
    double getMeasuring() const { return measuring; }
    double getGlobalScalingFactor() const { return globalScalingFactor; }
    void updateGlobalScalingFactor();
    void forceScaleFactor(double factor);
    void setScaleMode(SCALEMODE mode);
    SCALEMODE getScaleMode() const { return scaleMode; }

private:
    // Tells the scene of each change of a registered element.
    class SceneElementObserver : public util::ZObserver
    {
    public:
        explicit SceneElementObserver(Scene* scene) : scene(scene) {}
        // Source: the element that changed.
        void update(void* data, void* source) override;
        void release() { scene = nullptr; }

    private:
        util::ZPointer<Scene> scene;
    };

    typedef std::list<std::pair<InitFunction, void*>> InitFunctionList;
    typedef std::map<QString, InitFunctionList> InitFunctionMap;

    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void elementFocused(const main::Event* event);
    void elementsSelected(const main::Event* event);
    void childElementsReordered(const main::Event* event);
    void takeFocus(SceneElement* element);
    void handOutNumber(SceneElement* element);
    void takeBackNumber(SceneElement* element);
    NumberedElement* numberedElement(SceneElement* element, bool* isLight) const;
    void recomputeLines(SceneElement* element) const;
    void leaveSelection(SceneElement* element);
    void fillSelectionNode();
    void appendToElementList(SceneElement* element);
    void removeFromElementList(SceneElement* element);
    void clearElementList();
    bool nameTakenBehindFirstEntry(const QString& name) const;
    void notify(void* data, CHANGECAUSEBIT bit);
    void fire(unsigned long id, void* data);
    void resetAvailability();
    void dumpNode(SceneElement* element, int depth) const;
    static void callInitFunctions(const InitFunctionList& functions, SceneElement* element);
    static bool holds(const ElementList& list, const SceneElement* element);

    ElementList elementList;
    // elementList by name; changed only together with it, and told of renames by the observer.
    SceneNameIndex names;
    // The entry that free-name searches skip after a collision, as firstFreeCounter last saw it.
    const SceneElement* firstEntryOfCounters = nullptr;
    ElementList* deferredElements = nullptr;
    ElementList pendingElements;
    ElementPointer rootNode;
    SceneElementObserver* observer = nullptr;
    std::atomic<uint32_t> changeCause{0};
    ElementPointer focusedNode;
    ElementList selectedElements;
    ElementPointer selectionNode;
    unsigned int currentSelectionMode = 0;
    std::map<unsigned int, std::pair<QString, SELECTIONCOMMANDTYPE>> selectionModes;
    PointList selectedPoints;

    mutable QMutex elementMutex{QMutex::Recursive};
    QMutex transformMutex{QMutex::Recursive};
    bool transformLocked = false;
    int32_t transformLockCount = 0;
    QMutex structureMutex{QMutex::Recursive};
    bool structureLocked = false;
    int32_t structureLockCount = 0;

    // One table: a spare slot, the 6 clipping planes, the 7 lights. A plane that finds no
    // free number marks the spare slot; a light that finds none marks the last plane.
    bool availability[14];
    bool* const availableClippingPlanes = availability + 1;
    bool* const availableLightSources = availability + 7;

    bool changed = false;
    double measuring = 1.0;
    double globalScalingFactor = 1.0;
    SCALEMODE scaleMode = SCALE_BY_LARGEST;
    InitFunctionMap initFunctionsForElementName;
    InitFunctionMap initFunctionsForElementType;
    InitFunctionMap initFunctionsForElementTypeBeforeAdd;
};

} // namespace scene
} // namespace qel
