#include "module_scene/scene.h"

#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/math/numerictraits.h"
#include "module_scene/multipleelementsselection.h"
#include "module_scene/scenecoordinatesystem.h"
#include "module_scene/sceneevents.h"
#include "module_scene/selectedpoint.h"

#include <QMutexLocker>
#include <algorithm>
#include <boost/bind/bind.hpp>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <typeinfo>
#include <unordered_set>

namespace qel {
namespace scene {

namespace {

typedef math::NumericTraits<math::zReal> Traits;

const int ClippingPlaneCount = 6;
const int LightSourceCount = 7;

} // namespace

const QString Scene::ClippingPlaneType = QStringLiteral("ClippingPlane");
const QString Scene::LightSourceType = QStringLiteral("Lightsource");
const QString Scene::LinesType = QStringLiteral("Lines");

Scene::Scene()
{
    observer = new SceneElementObserver(this);
    rootNode = new SceneCoordinateSystem;
    selectionNode = new MultipleElementsSelection;
    addElement(rootNode);
    addElement(selectionNode);
    resetAvailability();

    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    events->registerEventFunction(
        SCENE_ELEMENT_FOCUSED, new main::EventManager::EventFunction(boost::bind(&Scene::elementFocused, this, _1)),
        this);
    events->registerEventFunction(
        SCENE_ELEMENTS_SELECTION,
        new main::EventManager::EventFunction(boost::bind(&Scene::elementsSelected, this, _1)), this);
    events->registerEventFunction(
        SCENE_ELEMENT_CHILDS_REORDERED,
        new main::EventManager::EventFunction(boost::bind(&Scene::childElementsReordered, this, _1)), this);
}

Scene::~Scene()
{
    for (const ElementPointer& element : elementList)
        element->detachObserver(observer);
    delete observer;
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void Scene::shutDown()
{
    // Whoever calls this may hold no pointer of their own: the scene ends at the return.
    const util::ZPointer<Scene> keepAlive(this);
    clearScene();
    focusedNode = nullptr;
    selectedElements.clear();
    selectedPoints.clear();
    observer->release();
}

// ---------------------------------------------------------------------------------------
// Registry

void Scene::addElement(SceneElement* element)
{
    if (!element)
        return;
    elementMutex.lock();
    if (deferredElements) {
        deferredElements->push_back(element);
        elementMutex.unlock();
        return;
    }
    // A second registration keeps one level of the lock: from another thread it shows up
    // as a stall at the next lock, which is where such a fault is found.
    if (names.contains(element))
        return;

    updateToFreeName(element);
    addElementInternal(element);
    if (element != rootNode.get() && element->getParentSceneElement().isNull())
        rootNode->addChild(element, true);

    const ElementList childs = *element->getChilds();
    for (const ElementPointer& child : childs) {
        if (names.contains(child))
            continue;
        updateToFreeName(child);
        addElementInternal(child);
    }

    changed = true;
    Notification notification{ELEMENT_ADDED, element, 0};
    notify(&notification, CHANGE_STRUCTURE);
    elementMutex.unlock();
}

void Scene::addElementInternal(SceneElement* element)
{
    handOutNumber(element);
    element->ref();
    pendingElements.push_back(element);
    callInitFunctionsForElementTypeBeforeAdd(element);
    pendingElements.remove(element);
    element->attachObserver(observer);
    appendToElementList(element);
    updateGlobalScalingFactor();
    callInitFunctionsForElementName(element);
    callInitFunctionsForElementType(element);
    fire(SCENE_ELEMENT_ADDED, element);
    element->unref();
}

void Scene::removeElement(SceneElement* element)
{
    if (!element)
        return;
    if (element == rootNode.get()) {
        log::Logger::log(2000, "module_scene/scene", 290, "qel::scene::Scene::removeElement", nullptr,
                         "You aren't allowed to remove the root node!");
        return;
    }
    if (element == selectionNode.get()) {
        log::Logger::log(2000, "module_scene/scene", 295, "qel::scene::Scene::removeElement", nullptr,
                         "You aren't allowed to remove the selection node!");
        return;
    }
    elementMutex.lock();
    element->ref();
    removeElementInternal(element);
    changed = true;
    elementMutex.unlock();

    Notification notification{ELEMENT_REMOVED, element, 0};
    notify(&notification, CHANGE_STRUCTURE);
    element->unref();
}

void Scene::removeElementInternal(SceneElement* element)
{
    element->detachObserver(observer);

    ElementList* childs = element->getChilds();
    while (!childs->empty()) {
        const ElementPointer child = childs->front();
        removeElementInternal(child);
        // A member of the selection node has a parent elsewhere, so its removal leaves it
        // in this list; take it out here, or the loop would not end.
        if (!childs->empty() && childs->front() == child)
            element->removeChild(child.get());
    }

    takeBackNumber(element);

    if (element == focusedNode.get()) {
        element->setFocused(false);
        focusedNode = nullptr;
        selectedElements.clear();
        if (!selectionNode.isNull())
            selectionNode->clearChilds();
        fire(SCENE_ELEMENT_FOCUSED, nullptr);
    } else {
        leaveSelection(element);
    }

    const ElementPointer parent = element->getParentSceneElement();
    if (!parent.isNull())
        parent->removeChild(element);

    removeFromElementList(element);
    initFunctionsForElementName.erase(element->getName());
    updateGlobalScalingFactor();
    fire(SCENE_ELEMENT_REMOVED, element);
}

// A member of a multiple selection goes out of it with its removal: otherwise removing or
// clearing the selection node later would remove it a second time.
void Scene::leaveSelection(SceneElement* element)
{
    auto entry = std::find(selectedElements.begin(), selectedElements.end(), element);
    if (entry == selectedElements.end())
        return;
    selectedElements.erase(entry);
    if (!selectionNode.isNull() && selectionNode.get() != element)
        selectionNode->removeChild(element);
}

void Scene::removeElementSubNodesOfType(SceneElement* parent, const QString& type)
{
    if (!parent)
        return;
    const ElementList childs = *parent->getChilds();
    for (const ElementPointer& child : childs) {
        if (child->getTypeName() == type)
            removeElement(child);
    }
}

void Scene::setRootNode(const ElementPointer& newRoot)
{
    if (newRoot.isNull() || typeid(*newRoot) != typeid(SceneCoordinateSystem)) {
        log::Logger::log(1000, "module_scene/scene", 828, "qel::scene::Scene::setRootNode", nullptr,
                         "Scene::setRootNode root nodes needs to be a CoordinateSystem!");
        return;
    }
    clearScene();

    QMutexLocker locker(&elementMutex);
    ElementList deferred;
    deferredElements = &deferred;

    ElementList nodes;
    getAllNodes(newRoot, nodes);
    ElementPointer newSelectionNode;
    ElementList lines;
    for (const ElementPointer& node : nodes) {
        if (typeid(*node) == typeid(MultipleElementsSelection))
            newSelectionNode = node;
        else if (node->getTypeName() == LinesType)
            lines.push_back(node);
        addElementInternal(node);
    }
    for (const ElementPointer& line : lines)
        recomputeLines(line);

    if (newSelectionNode.isNull()) {
        newSelectionNode = new MultipleElementsSelection;
        newRoot->addChild(newSelectionNode, true);
        addElementInternal(newSelectionNode);
    }
    rootNode = newRoot;
    selectionNode = newSelectionNode;
    initFunctionsForElementName.clear();

    deferredElements = nullptr;
    for (const ElementPointer& element : deferred) {
        updateToFreeName(element);
        addElementInternal(element);
        if (element->getParentSceneElement().isNull())
            rootNode->addChild(element, true);
    }

    changed = false;
    locker.unlock();
    notify(nullptr, CHANGE_STRUCTURE);
}

Scene::ElementPointer Scene::getSceneElement(const QString& name) const
{
    if (const std::vector<SceneElement*>* found = names.find(name)) {
        if (found->size() == 1)
            return found->front();
        // Several alike (a tree taken over as it was): the first in the list is the one.
        for (const ElementPointer& element : elementList) {
            if (element->getName() == name)
                return element;
        }
    }
    for (const ElementPointer& element : pendingElements) {
        if (element->getName() == name)
            return element;
    }
    return ElementPointer();
}

Scene::ElementPointer Scene::getFirstSceneElementByType(const QString& type) const
{
    for (const ElementPointer& element : elementList) {
        if (element->getTypeName() == type)
            return element;
    }
    if (deferredElements) {
        for (const ElementPointer& element : *deferredElements) {
            if (element->getTypeName() == type)
                return element;
        }
    }
    return ElementPointer();
}

Scene::ElementList Scene::getSceneElementsOfType(const QString& type) const
{
    ElementList found;
    for (const ElementPointer& element : elementList) {
        if (element->getTypeName() == type)
            found.push_back(element);
    }
    return found;
}

void Scene::getAllNodes(const ElementPointer& start, ElementList& out) const
{
    if (start.isNull())
        return;
    out.push_back(start);
    for (const ElementPointer& child : *start->getChilds())
        getAllNodes(child, out);
}

bool Scene::isExisting(SceneElement* element) const
{
    return names.contains(element);
}

bool Scene::isNameAvailable(const QString& name) const
{
    return names.count(name) == 0;
}

// The rule of a walk over the list that restarts behind its first entry (the root) after
// each collision: the base is checked against every entry, the numbered names against all
// but the first, so a name that only the root has is seen for the base alone. The base is
// not parsed, so Plane_1 becomes Plane_1_1.
void Scene::updateToFreeName(SceneElement* element)
{
    const QString base = element->getName();
    if (names.count(base) == 0)
        return;
    const SceneElement* firstEntry = elementList.empty() ? nullptr : elementList.front().get();
    if (firstEntry != firstEntryOfCounters) {
        names.forgetCounters();
        firstEntryOfCounters = firstEntry;
    }
    const int counter =
        names.firstFreeCounter(base, [this](const QString& name) { return nameTakenBehindFirstEntry(name); });
    element->setName(SceneNameIndex::numberedName(base, counter));
}

bool Scene::nameTakenBehindFirstEntry(const QString& name) const
{
    const int entries = names.count(name);
    if (entries == 0)
        return false;
    return entries > 1 || elementList.front()->getName() != name;
}

// ---------------------------------------------------------------------------------------
// Init functions

void Scene::registerInitFunctionForElementName(const QString& name, const InitFunction& function, void* data)
{
    initFunctionsForElementName[name].push_back(std::make_pair(function, data));
}

void Scene::registerInitFunctionForElementType(const QString& type, const InitFunction& function, void* data)
{
    initFunctionsForElementType[type].push_back(std::make_pair(function, data));
}

void Scene::registerInitFunctionForElementTypeBeforeAdd(const QString& type, const InitFunction& function,
                                                        void* data)
{
    initFunctionsForElementTypeBeforeAdd[type].push_back(std::make_pair(function, data));
}

// One-shot: the functions run in their order and then the name's entry goes, with
// whatever they registered for the name meanwhile. They run from a copy, as they may
// register or the element may be renamed while they run.
void Scene::callInitFunctionsForElementName(SceneElement* element)
{
    const QString name = element->getName();
    auto entry = initFunctionsForElementName.find(name);
    if (entry == initFunctionsForElementName.end())
        return;
    const InitFunctionList functions = entry->second;
    callInitFunctions(functions, element);
    initFunctionsForElementName.erase(name);
}

void Scene::callInitFunctionsForElementType(SceneElement* element)
{
    auto entry = initFunctionsForElementType.find(element->getTypeName());
    if (entry != initFunctionsForElementType.end())
        callInitFunctions(InitFunctionList(entry->second), element);
}

void Scene::callInitFunctionsForElementTypeBeforeAdd(SceneElement* element)
{
    auto entry = initFunctionsForElementTypeBeforeAdd.find(element->getTypeName());
    if (entry != initFunctionsForElementTypeBeforeAdd.end())
        callInitFunctions(InitFunctionList(entry->second), element);
}

void Scene::callInitFunctions(const InitFunctionList& functions, SceneElement* element)
{
    for (const auto& function : functions)
        function.first(element, function.second);
}

// ---------------------------------------------------------------------------------------
// Lifecycle

void Scene::cleanScene()
{
    if (rootNode.isNull())
        return;
    elementMutex.lock();
    ElementList childs;
    for (const ElementPointer& child : *rootNode->getChilds()) {
        if (child != selectionNode)
            childs.push_back(child);
    }
    for (auto entry = childs.rbegin(); entry != childs.rend(); ++entry) {
        if (!getSceneElement((*entry)->getName()).isNull())
            removeElement(*entry);
    }

    selectedPoints.clear();
    changed = true;
    fire(POINTS_DESELECTED, nullptr);
    informObservers(nullptr);

    resetAvailability();
    globalScalingFactor = 1.0;
    measuring = 1.0;
    changed = false;
    elementMutex.unlock();
    notify(nullptr, CHANGE_STRUCTURE);
}

void Scene::clearScene()
{
    cleanScene();
    elementMutex.lock();
    if (!selectionNode.isNull())
        removeElementInternal(selectionNode);
    // What is left (the root) must not tell a scene it no longer belongs to.
    for (const ElementPointer& element : elementList)
        element->detachObserver(observer);
    clearElementList();
    selectionNode = nullptr;
    rootNode = nullptr;
    elementMutex.unlock();
    notify(nullptr, CHANGE_STRUCTURE);
}

bool Scene::isClean() const
{
    const ElementList elements = elementList;
    for (const ElementPointer& element : elements) {
        if (element != rootNode && element != selectionNode && !element->isInternal())
            return false;
    }
    return true;
}

void Scene::dumpTree(SceneElement* element, int depth) const
{
    if (element) {
        dumpNode(element, depth);
        return;
    }
    log::Logger::log(4000, "module_scene/scene", 652, "qel::scene::Scene::dumpTree", nullptr, "ElementList [# %d]",
                     static_cast<int>(elementList.size()));
    log::Logger::log(4000, "module_scene/scene", 653, "qel::scene::Scene::dumpTree", nullptr,
                     "====================");
    for (const ElementPointer& entry : elementList)
        log::Logger::log(4000, "module_scene/scene", 656, "qel::scene::Scene::dumpTree", nullptr, "%s (%p)",
                         qPrintable(entry->getName()), static_cast<void*>(entry.get()));
    log::Logger::log(4000, "module_scene/scene", 658, "qel::scene::Scene::dumpTree", nullptr, QString());
    log::Logger::log(4000, "module_scene/scene", 659, "qel::scene::Scene::dumpTree", nullptr, "Tree");
    log::Logger::log(4000, "module_scene/scene", 660, "qel::scene::Scene::dumpTree", nullptr, "====");
    if (!rootNode.isNull())
        dumpNode(rootNode, depth);
}

void Scene::dumpNode(SceneElement* element, int depth) const
{
    const QString indent(depth, QLatin1Char('\t'));
    const SceneElement* parent = element->getParentSceneElement().get();
    log::Logger::log(4000, "module_scene/scene", 673, "qel::scene::Scene::dumpTree", nullptr,
                     "%s%s (%p) [# childs: %d, parent: %s (%p)]", qPrintable(indent), qPrintable(element->getName()),
                     static_cast<void*>(element), static_cast<int>(element->getChilds()->size()),
                     qPrintable(parent ? parent->getName() : QString()),
                     static_cast<const void*>(parent));
    const ElementList childs = *element->getChilds();
    for (const ElementPointer& child : childs)
        dumpNode(child, depth + 1);
}

void Scene::triggerUpdate()
{
    fire(SCENE_REDRAW, nullptr);
}

void Scene::childElementsReordered(const main::Event* event)
{
    auto* parent = static_cast<SceneElement*>(event->getSource());
    if (rootNode.isNull() || !parent || !rootNode->hasAsChild(parent, true)) {
        log::Logger::log(2000, "module_scene/scene", 712, "qel::scene::Scene::childElementsReordered", nullptr,
                         "Element '%s' is not a (sub-)child of the rootnode",
                         qPrintable(parent ? parent->getName() : QString()));
        return;
    }
    QMutexLocker locker(&elementMutex);
    // A child list may name a child more than once; the registry keeps one entry of each.
    std::unordered_set<const SceneElement*> moved;
    ElementList order;
    for (const ElementPointer& child : *parent->getChilds()) {
        if (moved.insert(child.get()).second)
            order.push_back(child);
    }
    for (const ElementPointer& child : order)
        removeFromElementList(child);
    for (const ElementPointer& child : order)
        appendToElementList(child);
}

// ---------------------------------------------------------------------------------------
// Clipping plane and light numbers

int Scene::findFreeClippingPlaneNumber() const
{
    for (int number = 0; number < ClippingPlaneCount; ++number) {
        if (availableClippingPlanes[number])
            return number;
    }
    return -1;
}

int Scene::findFreeLightSourceNumber() const
{
    for (int number = 0; number < LightSourceCount; ++number) {
        if (availableLightSources[number])
            return number;
    }
    return -1;
}

void Scene::handOutNumber(SceneElement* element)
{
    bool isLight = false;
    NumberedElement* numbered = numberedElement(element, &isLight);
    if (!numbered)
        return;
    // -1 marks the slot in front of the table: for a light that is the last clipping plane.
    const int number = isLight ? findFreeLightSourceNumber() : findFreeClippingPlaneNumber();
    (isLight ? availableLightSources : availableClippingPlanes)[number] = false;
    numbered->setSceneNumber(number);
}

void Scene::takeBackNumber(SceneElement* element)
{
    bool isLight = false;
    NumberedElement* numbered = numberedElement(element, &isLight);
    if (!numbered || numbered->getSceneNumber() < 0)
        return;
    (isLight ? availableLightSources : availableClippingPlanes)[numbered->getSceneNumber()] = true;
}

Scene::NumberedElement* Scene::numberedElement(SceneElement* element, bool* isLight) const
{
    const QString type = element->getTypeName();
    if (type != ClippingPlaneType && type != LightSourceType)
        return nullptr;
    *isLight = type == LightSourceType;
    return dynamic_cast<NumberedElement*>(element);
}

void Scene::resetAvailability()
{
    std::fill(std::begin(availability), std::end(availability), true);
}

// ---------------------------------------------------------------------------------------
// Selection modes

unsigned int Scene::registerSelectionMode(const QString& command, SELECTIONCOMMANDTYPE type)
{
    unsigned int id = 0;
    while (id == 0 || selectionModes.count(id))
        id = static_cast<unsigned int>(rand());
    selectionModes[id] = std::make_pair(command, type);
    return id;
}

void Scene::switchSelectionMode(unsigned int id)
{
    if (id != 0 && !selectionModes.count(id)) {
        log::Logger::log(1000, "module_scene/scene", 1378, "qel::scene::Scene::switchSelectionMode", nullptr,
                         "Selection mode is not registered!");
        return;
    }
    currentSelectionMode = id;
}

QString Scene::getCurrentSelectionCommand() const
{
    auto mode = selectionModes.find(currentSelectionMode);
    return mode == selectionModes.end() ? QString() : mode->second.first;
}

Scene::SELECTIONCOMMANDTYPE Scene::getCurrentSelectionType() const
{
    auto mode = selectionModes.find(currentSelectionMode);
    return mode == selectionModes.end() ? SELECT_NOTHING : mode->second.second;
}

// ---------------------------------------------------------------------------------------
// Focus and selection

void Scene::setFocus(const SceneElement* element)
{
    if (!element) {
        log::Logger::log(1000, "module_scene/scene", 434, "qel::scene::Scene::setFocus", nullptr,
                         "Scene::setFocus: element is NULL");
        return;
    }
    if (!element->isFocusable()) {
        log::Logger::log(2000, "module_scene/scene", 441, "qel::scene::Scene::setFocus", nullptr,
                         "Scene::setFocus: Element '%s' is not focusable!", qPrintable(element->getName()));
        return;
    }
    if (element->isFocused() && focusedNode == element)
        return;
    if (!names.contains(element))
        return;
    // The handler of the event makes the change.
    fire(SCENE_ELEMENT_FOCUSED, const_cast<SceneElement*>(element));
}

// Events of the scene itself move the focus away from the selection node only through
// elementsSelected; the first branch serves sources outside the module.
void Scene::elementFocused(const main::Event* event)
{
    auto* element = static_cast<SceneElement*>(event->getData());
    if (event->getSource() != this)
        takeFocus(element);
    if (focusedNode != selectionNode) {
        if (!selectionNode.isNull())
            selectionNode->clearChilds();
        takeFocus(element);
    }
}

void Scene::takeFocus(SceneElement* element)
{
    if (!focusedNode.isNull())
        focusedNode->setFocused(false);
    focusedNode = element;
    selectedElements.clear();
    if (element) {
        selectedElements.push_back(element);
        element->setFocused(true);
    }
    informObservers(nullptr);
}

void Scene::elementsSelected(const main::Event* event)
{
    const auto* selection = static_cast<const ElementList*>(event->getData());
    if (selection && selection != &selectedElements)
        selectedElements = *selection;
    else if (!selection)
        selectedElements.clear();

    if (!focusedNode.isNull())
        focusedNode->setFocused(false);
    if (selectedElements.empty()) {
        focusedNode = nullptr;
    } else if (selectedElements.size() == 1) {
        focusedNode = selectedElements.front();
    } else {
        focusedNode = selectionNode;
        if (!selectionNode.isNull())
            fillSelectionNode();
    }
    if (!focusedNode.isNull())
        focusedNode->setFocused(true);

    fire(SCENE_ELEMENT_FOCUSED, focusedNode.get());
    informObservers(nullptr);
}

void Scene::fillSelectionNode()
{
    ElementList members;
    for (const ElementPointer& entry : selectedElements) {
        if (entry != selectionNode && entry != rootNode)
            members.push_back(entry);
    }
    if (auto* group = dynamic_cast<MultipleElementsSelection*>(selectionNode.get())) {
        group->replaceMembers(members);
        return;
    }
    selectionNode->clearChilds();
    for (const ElementPointer& member : members)
        selectionNode->addChild(member.get(), false);
}

bool Scene::isElementSelected(const ElementPointer& element) const
{
    return holds(selectedElements, element);
}

// ---------------------------------------------------------------------------------------
// Picked points

void Scene::addSelectedPoint(const Vector4& position, SceneElement* element)
{
    if (!element)
        element = rootNode.get();
    if (!element) {
        log::Logger::log(1000, "module_scene/scene", 762, "qel::scene::Scene::addSelectedPoint", nullptr,
                         "There is no element to add the available point.");
        return;
    }
    const SelectedPoint::Point3 point(static_cast<float>(position.x()), static_cast<float>(position.y()),
                                      static_cast<float>(position.z()));
    addSelectedPoint(new SelectedPoint(element, point, SelectedPoint::NoFace));
}

void Scene::addSelectedPoint(SelectedPoint* point)
{
    const PointPointer taken(point);
    const SelectedPoint::Vector3 position = point->getPoint();
    if (!std::isfinite(position.x()) || !std::isfinite(position.y()) || !std::isfinite(position.z())) {
        log::Logger::log(2000, "module_scene/scene", __LINE__, "qel::scene::Scene::addSelectedPoint", nullptr,
                         "A point that is not finite can't be picked");
        return;
    }
    selectedPoints.push_back(point);
    changed = true;
    fire(POINTS_SELECTED, point);
    informObservers(nullptr);
}

void Scene::removeSelectedPoint(unsigned int index)
{
    if (index < selectedPoints.size())
        removeSelectedPoint(std::next(selectedPoints.begin(), index)->get());
    informObservers(nullptr);
}

void Scene::removeSelectedPoint(SelectedPoint* point)
{
    // The list may hold the last reference; listeners get a live point.
    const PointPointer keepAlive(point);
    selectedPoints.remove(keepAlive);
    changed = true;
    fire(POINTS_DESELECTED, point);
    informObservers(nullptr);
}

void Scene::replaceSelectedPoints(const PointList& points)
{
    // The list may be this scene's own: copied before it is cleared.
    const PointList replacement = points;
    clearSelectedPoints();
    selectedPoints = replacement;
    changed = true;
    fire(POINTS_REPLACED, nullptr);
    informObservers(nullptr);
}

void Scene::clearSelectedPoints()
{
    selectedPoints.clear();
    changed = true;
    fire(POINTS_DESELECTED, nullptr);
    informObservers(nullptr);
}

// ---------------------------------------------------------------------------------------
// Locks

void Scene::lock()
{
    elementMutex.lock();
}

bool Scene::tryLock()
{
    return elementMutex.tryLock();
}

void Scene::unlock()
{
    elementMutex.unlock();
}

void Scene::transformLock()
{
    QMutexLocker locker(&transformMutex);
    transformLocked = true;
    if (++transformLockCount == 1)
        fire(SCENE_TRANSFORM_LOCKED, nullptr);
}

void Scene::transformUnlock()
{
    QMutexLocker locker(&transformMutex);
    if (transformLockCount-- != 1)
        return;
    transformLocked = false;
    fire(SCENE_TRANSFORM_UNLOCKED, nullptr);
}

void Scene::structureLock()
{
    QMutexLocker locker(&structureMutex);
    structureLocked = true;
    if (++structureLockCount == 1) {
        bool locked = true;
        fire(SCENE_STRUCTURE_LOCKED, &locked);
    }
}

void Scene::structureUnlock()
{
    QMutexLocker locker(&structureMutex);
    if (structureLockCount-- != 1)
        return;
    structureLocked = false;
    bool locked = false;
    fire(SCENE_STRUCTURE_UNLOCKED, &locked);
}

// ---------------------------------------------------------------------------------------
// Units and scale

void Scene::setMeasuring(double value)
{
    if (std::fabs(value) < Traits::Epsilon) {
        log::Logger::log(2000, "module_scene/scene", 548, "qel::scene::Scene::setMeasuring", nullptr,
                         "Measuring cannot be 0.0");
        return;
    }
    // Every shown coordinate is divided by it: a negative one would mirror them all.
    if (!std::isfinite(value) || value < Traits::Zero) {
        log::Logger::log(2000, "module_scene/scene", __LINE__, "qel::scene::Scene::setMeasuring", nullptr,
                         QStringLiteral("Measuring must be a finite positive number, not %1").arg(value));
        return;
    }
    measuring = value;
    for (const ElementPointer& element : elementList) {
        if (element->getTypeName() == LinesType)
            recomputeLines(element);
    }
    fire(SCENE_MEASURING_CHANGED, &value);
    changed = true;
}

// The factor brings the models to a working size of 100 scene units, by the diagonal of
// the largest (or smallest) raw box.
void Scene::updateGlobalScalingFactor()
{
    double largest = Traits::Zero;
    double smallest = Traits::max();
    for (const ElementPointer& element : elementList) {
        if (!element->hasScalingFactor() || !element->hasBoundingBox())
            continue;
        const double diagonal = static_cast<const SceneElement*>(element.get())->getBoundingBox(false).size.length();
        largest = std::max(largest, diagonal);
        smallest = std::min(smallest, diagonal);
    }
    double factor = 1.0;
    if (!elementList.empty() && largest != Traits::Zero) {
        factor = 100.0 / (scaleMode == SCALE_BY_LARGEST ? largest : smallest);
        for (const ElementPointer& element : elementList)
            element->setScalingFactor(factor);
    }
    if (factor != globalScalingFactor) {
        globalScalingFactor = factor;
        fire(SCENE_GLOBALSCALING_CHANGED, &factor);
    }
}

void Scene::forceScaleFactor(double factor)
{
    if (!std::isfinite(factor) || factor <= Traits::Zero) {
        log::Logger::log(2000, "module_scene/scene", __LINE__, "qel::scene::Scene::forceScaleFactor", nullptr,
                         QStringLiteral("The scaling factor must be a finite positive number, not %1").arg(factor));
        return;
    }
    if (factor == globalScalingFactor)
        return;
    globalScalingFactor = factor;
    fire(SCENE_GLOBALSCALING_CHANGED, &factor);
}

void Scene::setScaleMode(SCALEMODE mode)
{
    if (mode == scaleMode)
        return;
    scaleMode = mode;
    updateGlobalScalingFactor();
}

// Lines elements don't exist yet as a class: the type key names them and the interface
// reaches them, so that a later type only has to implement it.
void Scene::recomputeLines(SceneElement* element) const
{
    if (auto* lines = dynamic_cast<RecomputableElement*>(element))
        lines->updateData();
}

// ---------------------------------------------------------------------------------------
// Helpers

void Scene::appendToElementList(SceneElement* element)
{
    elementList.push_back(element);
    names.add(element);
}

void Scene::removeFromElementList(SceneElement* element)
{
    elementList.remove(element);
    names.remove(element);
}

void Scene::clearElementList()
{
    elementList.clear();
    names.clear();
}

void Scene::notify(void* data, CHANGECAUSEBIT bit)
{
    changeCause.fetch_or(bit);
    informObservers(data);
    changeCause.fetch_and(~static_cast<uint32_t>(bit));
}

void Scene::fire(unsigned long id, void* data)
{
    main::Event event(id, data, this, false);
    main::EventManager::getInstance()->fireEvent(event);
}

bool Scene::holds(const ElementList& list, const SceneElement* element)
{
    return std::any_of(list.begin(), list.end(), [element](const ElementPointer& held) { return held == element; });
}

void Scene::SceneElementObserver::update(void* data, void* source)
{
    if (scene.isNull())
        return;
    if (reinterpret_cast<intptr_t>(data) == SceneElement::CHANGE_TRANSFORM) {
        scene->changed = true;
    } else if (source) {
        // A rename comes as a property change, before anyone hears of the new name.
        QMutexLocker locker(&scene->elementMutex);
        scene->names.refresh(static_cast<SceneElement*>(static_cast<util::ZObservedClass*>(source)));
    }
    scene->notify(nullptr, CHANGE_ELEMENT);
}

} // namespace scene
} // namespace qel
