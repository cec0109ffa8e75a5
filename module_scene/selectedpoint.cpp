#include "module_scene/selectedpoint.h"

#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/math/numerictraits.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <boost/bind/bind.hpp>
#include <cmath>

namespace qel {
namespace scene {

namespace {

typedef math::NumericTraits<double> Traits;

double clamped(double value)
{
    return std::fabs(value) < Traits::Epsilon ? Traits::Zero : value;
}

} // namespace

const uint64_t SelectedPoint::NoFace;

SelectedPoint::SelectedPoint(SceneElement* element, const Point3& point, uint64_t faceIndex)
    : element(element), elementLost(false), faceIndex(faceIndex), self(std::make_shared<SelectedPoint*>(this))
{
    const SceneElement::Matrix4 complete = element->getCompleteTransformMatrix();
    originalPoint = complete.getInverse() * Vector4(point.x(), point.y(), point.z(), 1.0);
    for (int i = 0; i < 4; ++i)
        originalPoint[i] = clamped(originalPoint[i]);
    bindTo(element);
}

SelectedPoint::SelectedPoint(const QString& elementName, const Point3& point, Scene* scene)
    : originalPoint(point.x(), point.y(), point.z(), 1.0),
      pendingName(elementName),
      self(std::make_shared<SelectedPoint*>(this))
{
    const Scene::ElementPointer found = scene->getSceneElement(elementName);
    if (!found.isNull()) {
        initFunction(found);
        return;
    }
    // The scene keeps the function after this point is gone; the shared cell tells it so.
    const std::shared_ptr<SelectedPoint*> cell = self;
    scene->registerInitFunctionForElementName(
        elementName,
        [cell](SceneElement* arrived, void*) {
            if (*cell)
                (*cell)->initFunction(arrived);
        },
        nullptr);
}

SelectedPoint::~SelectedPoint()
{
    *self = nullptr;
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
    if (!elementLost && element)
        element->detachObserver(observer);
    delete observer;
}

SelectedPoint::Vector3 SelectedPoint::getPoint() const
{
    return Vector3(transformedPoint.x(), transformedPoint.y(), transformedPoint.z());
}

void SelectedPoint::setHidden(bool value)
{
    hidden = value;
    informObservers(nullptr);
}

void SelectedPoint::setSelected(bool value)
{
    selected = value;
    informObservers(nullptr);
}

void SelectedPoint::initFunction(SceneElement* arrived)
{
    pendingName.clear();
    element = arrived;
    elementLost = false;
    bindTo(arrived);
}

void SelectedPoint::bindTo(SceneElement* target)
{
    updateTransformedPoint();
    observer = new SceneElementObserver(this);
    target->attachObserver(observer);
    using namespace boost::placeholders;
    main::EventManager::getInstance()->registerEventFunction(
        SCENE_ELEMENT_DELETED,
        new main::EventManager::EventFunction(boost::bind(&SelectedPoint::elementDeleted, this, _1)), this, target);
}

// Scene coordinates without the element's scaling: the drawer applies the scale.
void SelectedPoint::updateTransformedPoint()
{
    transformedPoint = element->getCompleteTransformMatrix() * originalPoint;
    const double scale = element->getScalingFactor();
    for (int i = 0; i < 3; ++i)
        transformedPoint[i] = clamped(transformedPoint[i] / scale);
    transformedPoint.w() = Traits::Zero;
}

// The element is past its own destructors: only its observer list may be touched.
void SelectedPoint::elementDeleted(const main::Event*)
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
    element->detachObserver(observer);
    delete observer;
    observer = nullptr;
    elementLost = true;
    informObservers(nullptr);
}

void SelectedPoint::SceneElementObserver::update(void* data, void*)
{
    point->updateTransformedPoint();
    point->informObservers(data);
}

SelectedPoint* SelectedPoint::loadFrom(QXmlStreamReader* reader, Scene* scene)
{
    if (!reader->isStartElement() || reader->name() != QLatin1String("point"))
        return nullptr;
    const QXmlStreamAttributes attributes = reader->attributes();
    const Point3 point(static_cast<float>(attributes.value("x").toDouble()),
                       static_cast<float>(attributes.value("y").toDouble()),
                       static_cast<float>(attributes.value("z").toDouble()));
    auto* loaded = new SelectedPoint(attributes.value("referencename").toString(), point, scene);
    if (attributes.hasAttribute("hidden"))
        loaded->hidden = attributes.value("hidden").toInt() == 1;
    if (attributes.hasAttribute("faceindex"))
        loaded->faceIndex = attributes.value("faceindex").toUInt();
    reader->skipCurrentElement();
    return loaded;
}

void SelectedPoint::saveTo(const SelectedPoint* point, QXmlStreamWriter* writer, const bool&)
{
    writer->writeStartElement("point");
    writer->writeAttribute("x", QString::number(point->originalPoint.x(), 'g', 16));
    writer->writeAttribute("y", QString::number(point->originalPoint.y(), 'g', 16));
    writer->writeAttribute("z", QString::number(point->originalPoint.z(), 'g', 16));
    const QString name = point->element ? point->element->getName() : point->pendingName;
    writer->writeAttribute("referencename", name);
    writer->writeAttribute("hidden", QString::number(point->hidden ? 1 : 0));
    if (point->faceIndex != NoFace)
        writer->writeAttribute("faceindex", QString::number(point->faceIndex));
    writer->writeEndElement();
}

} // namespace scene
} // namespace qel
