#include "module_scene/modulesceneservice.h"

#include "kernel/main/overseer.h"
#include "kernel/util/worker.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenelocker.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

namespace qel {
namespace scene {

namespace {

typedef SceneElement::Matrix4 Matrix4;

// JSON has no infinities or NaN: they are written as null.
QJsonValue number(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}

QJsonValue nameOrNull(const SceneElement* element)
{
    return element ? QJsonValue(element->getName()) : QJsonValue();
}

QJsonArray matrix(const Matrix4& values)
{
    QJsonArray entries;
    for (int i = 0; i < 16; ++i)
        entries.append(number(values[i]));
    return entries;
}

QString colorText(const QColor& color)
{
    return color.name(QColor::HexRgb);
}

// What a model adds: its mesh's live counts, its face selection and its look.
void addModelEntries(SceneVCGModel* model, QJsonObject& object)
{
    const MeshModel* mesh = model->getMeshModel();
    object.insert("vertices", mesh ? mesh->cm.vn : 0);
    object.insert("faces", mesh ? mesh->cm.fn : 0);
    object.insert("selectedFaces", static_cast<int>(model->getSelectedFaces().size()));
    object.insert("modelColor", colorText(model->getModelColor()));
    object.insert("clippingColor", colorText(model->getClippingColor()));
    object.insert("ambientColor", colorText(model->getAmbientColor()));
    object.insert("diffuseColor", colorText(model->getDiffuseColor()));
    object.insert("specularColor", colorText(model->getSpecularColor()));
    object.insert("shininess", number(model->getShininess()));
}

QJsonObject elementObject(SceneElement* element)
{
    QJsonArray childs;
    for (const SceneElement::Pointer& child : *element->getChilds())
        childs.append(child->getName());
    QJsonObject object{{"name", element->getName()},
            {"type", element->getTypeName()},
            {"parent", nameOrNull(element->getParentSceneElement().get())},
            {"visible", element->isVisible()},
            {"transform", matrix(element->getTransformMatrix())},
            {"complete", matrix(element->getCompleteTransformMatrix())},
            {"origin", matrix(element->getOrigin())},
            {"scalingFactor", number(element->getScalingFactor())},
            {"opacity", number(element->getOpacity())},
            {"boundingBoxShown", element->isBoundingBoxVisible()},
            {"childs", childs}};
    if (auto* model = dynamic_cast<SceneVCGModel*>(element))
        addModelEntries(model, object);
    return object;
}

// A lost point's element may be gone: its name isn't read any more.
QJsonObject pointObject(const SelectedPoint* point)
{
    const SelectedPoint::Vector4& position = point->getOriginalPoint();
    const SceneElement* element = point->isElementLost() ? nullptr : point->getElement();
    return {{"element", nameOrNull(element)},
            {"position", QJsonArray{number(position[0]), number(position[1]), number(position[2])}}};
}

// Renders on the application thread, where all GL work of the module happens.
class RenderWorker : public util::Worker
{
public:
    explicit RenderWorker(const QSize& size) : size(size) {}
    QImage image;

protected:
    void run() override;

private:
    QSize size;
};

// A panel of its own at the asked size, with the camera of the active panel when there is
// one: the windows on screen keep their size.
void RenderWorker::run()
{
    if (size.width() <= 0 || size.height() <= 0)
        return;
    gui::Viewer* viewer = gui::Viewer::getInstance();
    gui::ScenePanel* active = viewer->getActivePanel().data();
    gui::ScenePanel panel(active ? active->getScene() : viewer->getGlobalScene(), nullptr);
    if (active) {
        panel.setTransformMatrix(active->getTransformMatrix());
        panel.setScale(active->getScale());
    }
    panel.setAttribute(Qt::WA_DontShowOnScreen);
    panel.resize(size);
    panel.show();
    image = panel.grabFramebuffer().convertToFormat(QImage::Format_RGB32);
}

} // namespace

ModuleSceneService* ModuleSceneService::getInstance()
{
    static ModuleSceneService service;
    return &service;
}

QImage ModuleSceneService::renderScene(const QSize& size)
{
    auto* worker = new RenderWorker(size);
    worker->setWait(true);
    worker->setDontDeleteMySelf(true);
    main::Overseer::getInstance()->transmitWorker(worker);
    worker->wait();
    const QImage image = worker->image;
    delete worker;
    return image;
}

QString ModuleSceneService::dumpScene()
{
    util::ZPointer<Scene> scene = _GlobalScene();
    scene->dumpTree();
    return toJson(scene.get());
}

QString ModuleSceneService::toJson(Scene* scene)
{
    SceneLocker locker(scene, SceneLocker::LOCK_ELEMENTS);
    QJsonArray elements;
    for (const SceneElement::Pointer& element : *scene->getElementList())
        elements.append(elementObject(element.get()));
    QJsonArray points;
    for (const Scene::PointPointer& point : *scene->getSelectedPoints())
        points.append(pointObject(point.get()));
    const QJsonObject document{{"globalScalingFactor", number(scene->getGlobalScalingFactor())},
                               {"measuring", number(scene->getMeasuring())},
                               {"focused", nameOrNull(scene->getFocusedNode().get())},
                               {"elements", elements},
                               {"selectedPoints", points}};
    return QString::fromUtf8(QJsonDocument(document).toJson(QJsonDocument::Indented));
}

} // namespace scene
} // namespace qel

qel::main::SceneService* getSceneService()
{
    return qel::scene::ModuleSceneService::getInstance();
}
