#include "module_scene/modulesceneservice.h"

#include "kernel/main/overseer.h"
#include "kernel/util/worker.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/selectedpoint.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <cmath>

namespace qel {
namespace scene {

namespace {

typedef SceneElement::Matrix4 Matrix4;

// JSON has no infinities or NaN: they are written as null.
QString number(double value)
{
    return std::isfinite(value) ? QString::number(value, 'g', 17) : QStringLiteral("null");
}

QString text(const QString& value)
{
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

QString nameOrNull(const SceneElement* element)
{
    return element ? text(element->getName()) : QStringLiteral("null");
}

QString boolean(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString list(const QStringList& entries)
{
    return "[" + entries.join(", ") + "]";
}

QString matrix(const Matrix4& values)
{
    QStringList entries;
    for (int i = 0; i < 16; ++i)
        entries << number(values[i]);
    return list(entries);
}

QString object(const QStringList& members)
{
    return "{" + members.join(", ") + "}";
}

QString member(const char* key, const QString& value)
{
    return text(QString::fromLatin1(key)) + ": " + value;
}

QString elementObject(const SceneElement* element)
{
    QStringList childs;
    for (const SceneElement::Pointer& child : *element->getChilds())
        childs << text(child->getName());
    return object({member("name", text(element->getName())), member("type", text(element->getTypeName())),
                   member("parent", nameOrNull(element->getParentSceneElement().get())),
                   member("visible", boolean(element->isVisible())),
                   member("transform", matrix(element->getTransformMatrix())),
                   member("complete", matrix(element->getCompleteTransformMatrix())),
                   member("origin", matrix(element->getOrigin())),
                   member("scalingFactor", number(element->getScalingFactor())), member("childs", list(childs))});
}

// A lost point's element may be gone: its name isn't read any more.
QString pointObject(const SelectedPoint* point)
{
    const SelectedPoint::Vector4& position = point->getOriginalPoint();
    const SceneElement* element = point->isElementLost() ? nullptr : point->getElement();
    return object({member("element", nameOrNull(element)),
                   member("position", list({number(position[0]), number(position[1]), number(position[2])}))});
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
    QStringList elements;
    for (const SceneElement::Pointer& element : *scene->getElementList())
        elements << "    " + elementObject(element.get());
    QStringList points;
    for (const Scene::PointPointer& point : *scene->getSelectedPoints())
        points << "    " + pointObject(point.get());
    QStringList members;
    members << member("globalScalingFactor", number(scene->getGlobalScalingFactor()))
            << member("measuring", number(scene->getMeasuring()))
            << member("focused", nameOrNull(scene->getFocusedNode().get()))
            << member("elements", elements.isEmpty() ? "[]" : "[\n" + elements.join(",\n") + "\n  ]")
            << member("selectedPoints", points.isEmpty() ? "[]" : "[\n" + points.join(",\n") + "\n  ]");
    return "{\n  " + members.join(",\n  ") + "\n}\n";
}

} // namespace scene
} // namespace qel

qel::main::SceneService* getSceneService()
{
    return qel::scene::ModuleSceneService::getInstance();
}
