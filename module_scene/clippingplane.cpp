#include "module_scene/clippingplane.h"

#include "kernel/log/logger.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "module_scene/gui/clippingplanegui.h"
#include "module_scene/sceneelementfactory.h"
#include "module_scene/sceneevents.h"
#include "module_scene/scenevcgmodel.h"

#include <QDockWidget>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <boost/bind/bind.hpp>
#include <qopengl.h>

namespace qel {
namespace scene {

const QString ClippingPlane::TypeName = QStringLiteral("ClippingPlane");

namespace {

const SceneElementFactory::Register registration(ClippingPlane::TypeName, &ClippingPlane::createElement);

const char* const LogFile = "module_scene/clippingplane";
const float GridExtent = 1000.0f;
const float CapExtent = 10000.0f;

bool isModel(const SceneElement* element)
{
    return element->getTypeName() == SceneVCGModel::TypeName;
}

void collectModels(const SceneElement* element, std::vector<SceneVCGModel*>& models)
{
    for (const SceneElement::Pointer& child : *element->getChilds()) {
        if (isModel(child.get()))
            models.push_back(static_cast<SceneVCGModel*>(child.get()));
        collectModels(child.get(), models);
    }
}

} // namespace

ClippingPlane::ClippingPlane() : SceneElement(tr("ClippingPlane"))
{
    m_hasCustomGUI = true;
    m_isViewOrientationEnabled = false;
    m_isAParentNode = true;
    m_isModifier = true;
    m_isSerializable = true;

    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    events->registerEventFunction(
        SCENE_ELEMENT_CHILD_ADDED,
        new main::EventManager::EventFunction(boost::bind(&ClippingPlane::childAdded, this, _1)), this);
    events->registerEventFunction(
        SCENE_ELEMENT_CHILD_REMOVED,
        new main::EventManager::EventFunction(boost::bind(&ClippingPlane::childRemoved, this, _1)), this);
}

ClippingPlane::~ClippingPlane()
{
    if (gui)
        gui->deleteLater();
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

SceneElement* ClippingPlane::createElement()
{
    return new ClippingPlane;
}

QString ClippingPlane::getTypeName() const
{
    return TypeName;
}

void ClippingPlane::setColoringEnabled(bool enabled)
{
    if (coloringEnabled == enabled)
        return;
    coloringEnabled = enabled;
    setChanged(CHANGE_PROPERTY);
}

std::vector<SceneVCGModel*> ClippingPlane::getModels() const
{
    std::vector<SceneVCGModel*> models;
    collectModels(this, models);
    return models;
}

void ClippingPlane::draw()
{
    glPushMatrix();
    glMultMatrixd(m_transformMatrix.data());
    drawGL();
    glPopMatrix();
    if (coloringEnabled)
        glDrawClippedPlane();
}

void ClippingPlane::drawGL()
{
    if (planeNumber < 0) {
        log::Logger::log(2000, LogFile, 110, "qel::scene::ClippingPlane::drawGL", nullptr, "Plane number not set!");
        return;
    }
    if (m_isVisible)
        drawGrid();
    glEnablePlane();
}

void ClippingPlane::initializeGL()
{
}

// The half-space z >= 0 of the current frame stays.
void ClippingPlane::glEnablePlane() const
{
    if (planeNumber < 0)
        return;
    const GLenum plane = static_cast<GLenum>(GL_CLIP_PLANE0 + planeNumber);
    const GLdouble equation[4] = {0.0, 0.0, 1.0, 0.0};
    glEnable(plane);
    glClipPlane(plane, equation);
}

void ClippingPlane::drawGrid() const
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushMatrix();
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glBegin(GL_LINES);
    glColor3f(0.9f, 0.0f, 0.0f);
    for (int step = -100; step <= 100; ++step) {
        const float v = static_cast<float>(step) * 10.0f;
        glVertex3f(v, -GridExtent, 0.0f);
        glVertex3f(v, GridExtent, 0.0f);
        glVertex3f(-GridExtent, v, 0.0f);
        glVertex3f(GridExtent, v, 0.0f);
    }
    glEnd();
    glLineWidth(2.0f);
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_LINES);
    glVertex3f(0.0f, 0.0f, 0.0f);
    glVertex3f(0.0f, 0.0f, 100.0f);
    glEnd();
    glLineWidth(1.0f);
    glPopMatrix();
    glPopAttrib();
}

void ClippingPlane::glDrawClippedPlane()
{
    for (SceneVCGModel* model : getModels())
        glDrawCap(model);
}

// Back faces behind the plane count up, front faces down: what is left non-zero is the
// model's section in this plane, which the quad fills.
void ClippingPlane::glDrawCap(SceneVCGModel* model)
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glEnable(GL_CULL_FACE);
    glEnable(GL_STENCIL_TEST);
    glClear(GL_STENCIL_BUFFER_BIT);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);

    glStencilFunc(GL_ALWAYS, 0, 0);
    glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    glCullFace(GL_FRONT);
    glDrawChain(model);
    glStencilOp(GL_KEEP, GL_KEEP, GL_DECR);
    glCullFace(GL_BACK);
    glDrawChain(model);

    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glEnable(GL_DEPTH_TEST);
    if (planeNumber >= 0)
        glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + planeNumber));
    glStencilFunc(GL_NOTEQUAL, 0, 0xFFFFFFFF);

    glPushMatrix();
    glMultMatrixd(m_transformMatrix.data());
    glEnable(GL_COLOR_MATERIAL);
    glBegin(GL_QUADS);
    QColor color = model->getClippingColor();
    if (!color.isValid()) {
        color = QColor(255, 0, 0);
        log::Logger::log(2000, LogFile, 199, "qel::scene::ClippingPlane::glDrawClippedPlane", nullptr,
                         "Invalid clipping color of model %s", model->getName().toLocal8Bit().constData());
    }
    glColor3f(static_cast<GLfloat>(color.redF()), static_cast<GLfloat>(color.greenF()),
              static_cast<GLfloat>(color.blueF()));
    glVertex3f(CapExtent, -CapExtent, 0.0f);
    glVertex3f(-CapExtent, -CapExtent, 0.0f);
    glVertex3f(-CapExtent, CapExtent, 0.0f);
    glVertex3f(CapExtent, CapExtent, 0.0f);
    glEnd();
    glPopMatrix();
    glPopAttrib();
}

void ClippingPlane::glDrawChain(SceneElement* element)
{
    SceneElement* parent = element->getParentSceneElement().get();
    if (parent)
        glDrawChain(parent);
    if (auto* plane = dynamic_cast<ClippingPlane*>(element)) {
        glPushMatrix();
        glMultMatrixd(plane->getTransformMatrix().data());
        plane->glEnablePlane();
        glPopMatrix();
    } else if (isModel(element)) {
        element->draw();
    }
}

void ClippingPlane::saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort)
{
    SceneElement::saveTo(writer, tar, abort);
    writer->writeTextElement("coloringEnabled", QString::number(coloringEnabled ? 1 : 0));
}

// Nobody is told of the loaded value.
void ClippingPlane::loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort)
{
    SceneElement::loadFrom(reader, tar, scene, abort);
    if (reader->isStartElement() && reader->name() == QLatin1String("coloringEnabled"))
        coloringEnabled = reader->readElementText().toInt() != 0;
}

QWidget* ClippingPlane::createCustomGUI()
{
    if (!gui) {
        gui = new gui::ClippingPlaneGUI(this);
        for (SceneVCGModel* model : getModels())
            gui->addModelRow(model);
    }
    return gui->getDockWidget();
}

bool ClippingPlane::isAncestorOf(SceneElement* element) const
{
    for (SceneElement* walk = element; walk; walk = walk->getParentSceneElement().get()) {
        if (walk == this)
            return true;
    }
    return false;
}

void ClippingPlane::childAdded(const main::Event* event)
{
    auto* child = static_cast<SceneElement*>(event->getData());
    if (!gui || !child || !isModel(child) || !isAncestorOf(static_cast<SceneElement*>(event->getSource())))
        return;
    gui->addModelRow(static_cast<SceneVCGModel*>(child));
}

void ClippingPlane::childRemoved(const main::Event* event)
{
    auto* child = static_cast<SceneElement*>(event->getData());
    if (!gui || !child || !isModel(child) || !isAncestorOf(static_cast<SceneElement*>(event->getSource())))
        return;
    gui->removeModelRow(static_cast<SceneVCGModel*>(child));
}

} // namespace scene
} // namespace qel
