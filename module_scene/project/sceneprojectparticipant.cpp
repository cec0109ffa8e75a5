#include "module_scene/project/sceneprojectparticipant.h"

#include "kernel/io/ztarfile.h"
#include "kernel/log/logger.h"
#include "kernel/util/exception.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/scenewindow.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/project/scenechangewatcher.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"

#include <QMetaObject>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>

namespace qel {
namespace scene {

namespace {

const char* const LogFile = "module_scene/project/sceneprojectparticipant";
const char* const LoadFunction = "qel::scene::SceneProjectParticipant::load";

// The element the reader stands on, with everything inside it, as a document of its own:
// staged so that it can be read again at commit. The reader is left on its end element.
bool capture(QXmlStreamReader* reader, QByteArray& bytes)
{
    QXmlStreamWriter writer(&bytes);
    int depth = 0;
    do {
        if (reader->isStartElement()) {
            writer.writeStartElement(reader->name().toString());
            writer.writeAttributes(reader->attributes());
            ++depth;
        } else if (reader->isEndElement()) {
            writer.writeEndElement();
            --depth;
        } else if (reader->isCharacters()) {
            writer.writeCharacters(reader->text().toString());
        }
        if (depth == 0)
            return true;
        reader->readNext();
    } while (!reader->hasError());
    return false;
}

// A reader standing on the first start element of a captured document.
void openCaptured(QXmlStreamReader& reader)
{
    reader.readNextStartElement();
}

bool isFiniteNumber(const QStringRef& text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok && std::isfinite(value);
}

QString malformed(const QXmlStreamReader* reader, const QString& what)
{
    return SceneProjectParticipant::tr("The scene section is malformed at line %1: %2")
        .arg(reader->lineNumber())
        .arg(what);
}

} // namespace

SceneProjectParticipant::SceneProjectParticipant(const SceneSource& source, bool withViews, Scene* watchedScene)
    : source(source), withViews(withViews), watcher(new SceneChangeWatcher(watchedScene))
{
}

SceneProjectParticipant::~SceneProjectParticipant() = default;

QString SceneProjectParticipant::sectionName() const
{
    return QStringLiteral("scene");
}

// ---------------------------------------------------------------------------------------
// Saving

// The tree is taken under the scene's lock, and written without it: a model's mesh may take
// long, and views would stay blank meanwhile.
bool SceneProjectParticipant::save(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort, QString& error)
{
    const util::ZPointer<Scene> scene = source();
    const Nodes nodes = collectTree(scene.get());
    if (!writeNodes(nodes, writer, tar, abort, error))
        return false;
    writePoints(scene.get(), writer, abort);
    writeViews(writer);
    if (abort) {
        error = tr("Saving the scene was aborted");
        return false;
    }
    return true;
}

SceneProjectParticipant::Nodes SceneProjectParticipant::collectTree(Scene* scene) const
{
    SceneLocker locker(scene, SceneLocker::LOCK_ELEMENTS);
    Nodes nodes;
    if (!scene->getRootNode().isNull())
        collectChildren(scene->getRootNode().get(), scene->getSelectionNode().get(), nodes);
    return nodes;
}

// Only children whose parent this is: the selection node holds others' children too.
void SceneProjectParticipant::collectChildren(const SceneElement* parent, const SceneElement* skipped, Nodes& into)
{
    for (const SceneElement::Pointer& child : *parent->getChilds()) {
        if (child.get() == skipped || child->getParentSceneElement().get() != parent)
            continue;
        if (!child->isSerializable()) {
            collectChildren(child.get(), skipped, into);
            continue;
        }
        into.push_back(Node{child, {}});
        collectChildren(child.get(), skipped, into.back().children);
    }
}

bool SceneProjectParticipant::writeNodes(const Nodes& nodes, QXmlStreamWriter* writer, io::ZTarFile* tar,
                                         const bool& abort, QString& error) const
{
    for (const Node& node : nodes) {
        writer->writeStartElement("element");
        writer->writeAttribute("type", node.element->getTypeName());
        writer->writeStartElement("content");
        node.element->saveTo(writer, tar, abort);
        writer->writeEndElement();
        if (abort)
            return false;
        if (!checkModelEntry(node.element.get(), tar, error))
            return false;
        if (!node.children.empty()) {
            writer->writeStartElement("children");
            if (!writeNodes(node.children, writer, tar, abort, error))
                return false;
            writer->writeEndElement();
        }
        writer->writeEndElement();
    }
    return true;
}

// A model whose mesh didn't reach the archive would open without it: the save fails instead.
bool SceneProjectParticipant::checkModelEntry(const SceneElement* element, const io::ZTarFile* tar, QString& error)
{
    const auto* model = dynamic_cast<const SceneVCGModel*>(element);
    if (!model || !tar || tar->contains(model->getArchiveEntryName()))
        return true;
    error = tr("The mesh of model '%1' couldn't be written to the project: %2")
                .arg(model->getName(), tar->errorString());
    return false;
}

void SceneProjectParticipant::writePoints(Scene* scene, QXmlStreamWriter* writer, const bool& abort)
{
    Scene::PointList points;
    {
        SceneLocker locker(scene, SceneLocker::LOCK_ELEMENTS);
        points = *scene->getSelectedPoints();
    }
    writer->writeStartElement("points");
    for (const Scene::PointPointer& point : points)
        SelectedPoint::saveTo(point.get(), writer, abort);
    writer->writeEndElement();
}

void SceneProjectParticipant::writeViews(QXmlStreamWriter* writer) const
{
    writer->writeStartElement("views");
    if (withViews) {
        for (gui::SceneWindow* window : *gui::Viewer::getInstance()->getSceneWindows()) {
            if (!window->getPanel())
                continue;
            writer->writeStartElement("window");
            window->saveTo(writer);
            writer->writeEndElement();
        }
    }
    writer->writeEndElement();
}

// ---------------------------------------------------------------------------------------
// Opening

bool SceneProjectParticipant::load(QXmlStreamReader* reader, io::ZTarFile* tar, bool& abort, QString& error)
{
    discard();
    const util::ZPointer<Scene> scene = source();
    if (readSection(reader, tar, scene.get(), abort, error))
        return true;
    if (reader->hasError())
        error = malformed(reader, reader->errorString());
    log::Logger::log(1000, LogFile, 233, LoadFunction, nullptr, error);
    discard();
    return false;
}

bool SceneProjectParticipant::readSection(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort,
                                          QString& error)
{
    while (reader->readNextStartElement()) {
        const QStringRef name = reader->name();
        bool ok = true;
        if (name == QLatin1String("element"))
            ok = readElement(reader, tar, scene, abort, stagedElements, error);
        else if (name == QLatin1String("points"))
            ok = readPoints(reader, error);
        else if (name == QLatin1String("views"))
            ok = readViews(reader);
        else
            reader->skipCurrentElement();
        if (!ok)
            return false;
    }
    return !reader->hasError();
}

// An element of an unknown type is skipped with a warning; its children take its place.
bool SceneProjectParticipant::readElement(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort,
                                          Nodes& into, QString& error)
{
    const QString type = reader->attributes().value("type").toString();
    if (type.isEmpty()) {
        error = malformed(reader, tr("an element has no type"));
        return false;
    }
    const SceneElement::Pointer element(SceneElementFactory::getInstance()->createElement(type));
    if (element.isNull())
        log::Logger::log(2000, LogFile, 270, LoadFunction, nullptr,
                         "Unknown element type '%s' in the project skipped; its children are kept", qPrintable(type));
    Node node{element, {}};
    Nodes& children = element.isNull() ? into : node.children;
    while (reader->readNextStartElement()) {
        bool ok = true;
        if (reader->name() == QLatin1String("content") && !element.isNull()) {
            ok = readContent(reader, tar, scene, element.get(), abort, error);
        } else if (reader->name() == QLatin1String("children")) {
            while (ok && reader->readNextStartElement()) {
                if (reader->name() == QLatin1String("element"))
                    ok = readElement(reader, tar, scene, abort, children, error);
                else
                    reader->skipCurrentElement();
            }
        } else {
            reader->skipCurrentElement();
        }
        if (!ok || reader->hasError())
            return false;
    }
    if (!element.isNull())
        into.push_back(node);
    return !reader->hasError();
}

// loadFrom once per start element of the content; what it leaves unread is stepped over.
bool SceneProjectParticipant::readContent(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene,
                                          SceneElement* element, bool& abort, QString& error)
{
    while (reader->readNextStartElement()) {
        try {
            element->loadFrom(reader, tar, scene, abort);
        } catch (const Exception& exception) {
            error = exception.getMessage();
            return false;
        }
        if (abort) {
            error = tr("Reading element '%1' of type %2 was stopped").arg(element->getName(), element->getTypeName());
            return false;
        }
        if (reader->isStartElement())
            reader->skipCurrentElement();
    }
    return !reader->hasError();
}

// Points are bound to their elements by name at commit, when the elements exist.
bool SceneProjectParticipant::readPoints(QXmlStreamReader* reader, QString& error)
{
    while (reader->readNextStartElement()) {
        if (reader->name() != QLatin1String("point")) {
            reader->skipCurrentElement();
            continue;
        }
        const QXmlStreamAttributes attributes = reader->attributes();
        if (!isFiniteNumber(attributes.value("x")) || !isFiniteNumber(attributes.value("y"))
            || !isFiniteNumber(attributes.value("z")) || !attributes.hasAttribute("referencename")) {
            error = malformed(reader, tr("a picked point needs finite x, y, z and a referencename"));
            return false;
        }
        QByteArray point;
        if (!capture(reader, point))
            return false;
        stagedPoints.push_back(point);
    }
    return !reader->hasError();
}

bool SceneProjectParticipant::readViews(QXmlStreamReader* reader)
{
    while (reader->readNextStartElement()) {
        if (reader->name() != QLatin1String("window")) {
            reader->skipCurrentElement();
            continue;
        }
        QByteArray view;
        if (!capture(reader, view))
            return false;
        stagedViews.push_back(view);
    }
    return !reader->hasError();
}

void SceneProjectParticipant::commit()
{
    SceneChangeWatcher::Silence silence(watcher.get());
    const util::ZPointer<Scene> scene = source();
    scene->cleanScene();
    for (const Node& node : stagedElements)
        addNode(scene.get(), nullptr, node);
    restorePoints(scene.get());
    restoreViews();
    discard();
    scene->triggerUpdate();
}

// Each element joins its parent first and the scene then, as one that a user adds under a
// parent; it brings no children along, so each is named and numbered on its own.
void SceneProjectParticipant::addNode(Scene* scene, SceneElement* parent, const Node& node) const
{
    if (parent)
        parent->addChild(node.element);
    scene->addElement(node.element.get());
    for (const Node& child : node.children)
        addNode(scene, node.element.get(), child);
}

void SceneProjectParticipant::restorePoints(Scene* scene) const
{
    for (const QByteArray& captured : stagedPoints) {
        QXmlStreamReader reader(captured);
        openCaptured(reader);
        if (SelectedPoint* point = SelectedPoint::loadFrom(&reader, scene))
            scene->addSelectedPoint(point);
    }
}

// Saved cameras go to the open windows in turn; windows beyond them keep theirs.
void SceneProjectParticipant::restoreViews() const
{
    if (!withViews)
        return;
    auto view = stagedViews.begin();
    for (gui::SceneWindow* window : *gui::Viewer::getInstance()->getSceneWindows()) {
        gui::ScenePanel* panel = window->getPanel();
        if (view == stagedViews.end())
            break;
        if (!panel)
            continue;
        QXmlStreamReader reader(*view++);
        openCaptured(reader);
        window->loadFrom(&reader);
        QMetaObject::invokeMethod(panel, "update", Qt::QueuedConnection);
    }
}

void SceneProjectParticipant::discard()
{
    stagedElements.clear();
    stagedPoints.clear();
    stagedViews.clear();
}

void SceneProjectParticipant::clear()
{
    SceneChangeWatcher::Silence silence(watcher.get());
    discard();
    const util::ZPointer<Scene> scene = source();
    scene->cleanScene();
    scene->triggerUpdate();
}

} // namespace scene
} // namespace qel
