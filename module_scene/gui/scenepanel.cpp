#include "module_scene/gui/scenepanel.h"

#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/scenedrawer.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QMutex>
#include <QMutexLocker>
#include <QSettings>
#include <QThread>
#include <QWheelEvent>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <GL/glu.h>
#include <boost/bind/bind.hpp>
#include <cmath>

namespace qel {
namespace gui {

namespace {

const double MinimumScale = 1e-10;

QString number(double value)
{
    return QString::number(value, 'g', 16);
}

} // namespace

ScenePanel::ScenePanel(const util::ZPointer<scene::Scene>& scene, QWidget* parent)
    : LockableGLWidget(Viewer::getInstance()->getGLContext(), parent), scene(scene)
{
    init();
    setScene(scene);
}

ScenePanel::ScenePanel(QWidget* parent) : LockableGLWidget(Viewer::getInstance()->getGLContext(), parent)
{
    init();
}

ScenePanel::~ScenePanel()
{
    if (!scene.isNull())
        scene->detachObserver(observer);
    scene = nullptr;
    delete observer;
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
    delete mutex;
    delete drawer;
}

void ScenePanel::init()
{
    mutex = new QMutex(QMutex::Recursive);
    view = Matrix4::identity();
    drawer = nullptr;
    observer = new SceneObserver(this);
    scale = oldScale = 1.0;
    axisMask = AXIS_X | AXIS_Y | AXIS_Z;
    elementTransformMode = MODE_SCREEN;
    pressX = pressY = -1;
    modifiers = 0;
    settingsUpdate(nullptr);

    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    events->registerEventFunction(
        scene::SCENE_ELEMENT_FOCUSED,
        new main::EventManager::EventFunction(boost::bind(&ScenePanel::elementFocused, this, _1)), this);
    events->registerEventFunction(
        scene::SETTINGS_CHANGED,
        new main::EventManager::EventFunction(boost::bind(&ScenePanel::settingsUpdate, this, _1)), this);
    setFocusPolicy(Qt::ClickFocus);
}

void ScenePanel::setScene(const util::ZPointer<scene::Scene>& newScene)
{
    main::EventManager* events = main::EventManager::getInstance();
    if (!scene.isNull()) {
        scene->detachObserver(observer);
        events->unregisterEventFunction(scene::SCENE_REDRAW, this, scene.get());
        scene = nullptr;
    }
    delete drawer;
    drawer = nullptr;
    scene = newScene;
    if (scene.isNull())
        return;
    drawer = new scene::SceneDrawer(scene);
    scene->attachObserver(observer);
    mustInitialize = true;
    setFocusElement(scene->getFocusedNode().get());
    using namespace boost::placeholders;
    events->registerEventFunction(
        scene::SCENE_REDRAW, new main::EventManager::EventFunction(boost::bind(&ScenePanel::sceneRedraw, this, _1)),
        this, scene.get());
}

util::ZPointer<scene::Scene> ScenePanel::getScene() const
{
    return scene;
}

ScenePanel::Matrix4 ScenePanel::getScaledTransformMatrix() const
{
    return view * Matrix4::scaling(scale, scale, scale);
}

void ScenePanel::setRotation(const math::Quaternion<double>& rotation)
{
    const Matrix4 matrix = rotation.toMatrix();
    for (int column = 0; column < 3; ++column)
        view.setColumn(column, matrix.getColumn(column));
    update();
}

void ScenePanel::setTranslation(double x, double y, double z)
{
    scale = 1.0 - (z / scene::SceneDrawer::ZOBJECTCENTER - 1.0);
    view[12] = scale * x;
    view[13] = scale * y;
}

void ScenePanel::resetTransform()
{
    view = Matrix4::identity();
    scale = 1.0;
}

void ScenePanel::setFocusElement(scene::SceneElement* element)
{
    if (element && element->isFocusable() && element->isTransformable()) {
        focusElement = element;
        hasFocusElement = 1;
    } else {
        focusElement = nullptr;
        hasFocusElement = 0;
    }
}

void ScenePanel::elementFocused(const main::Event* event)
{
    setFocusElement(static_cast<scene::SceneElement*>(event->getData()));
}

void ScenePanel::sceneRedraw(const main::Event* event)
{
    if (event->getSource() == static_cast<void*>(scene.get()))
        requestRepaint();
}

void ScenePanel::settingsUpdate(const main::Event*)
{
    QSettings* settings = main::Overseer::getInstance()->getQSettings();
    wheelSpeed = settings->value("settings/wheelspeed", 100).toInt();
    leftRightSpeed = settings->value("settings/leftrightspeed", 100).toInt();
    rightSpeed = settings->value("settings/rightspeed", 100).toInt();
    midSpeed = settings->value("settings/midspeed", 100).toInt();
}

void ScenePanel::requestRepaint()
{
    if (QThread::currentThread() == thread())
        update();
    else
        QMetaObject::invokeMethod(this, [this]() { update(); }, Qt::QueuedConnection);
}

// A structural change (bit 1 of the cause) brings new elements that need their GL setup.
void ScenePanel::SceneObserver::update(void*, void*)
{
    QMutexLocker locker(panel->mutex);
    panel->mustInitialize = panel->mustInitialize || (panel->scene->getChangeCause() & scene::Scene::CHANGE_STRUCTURE);
    panel->requestRepaint();
}

void ScenePanel::glInit()
{
    if (drawer)
        drawer->initialize();
}

void ScenePanel::glResize(int width, int height)
{
    if (drawer)
        drawer->resize(width, height);
}

void ScenePanel::glPaint()
{
    if (scene.isNull())
        return;
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    const QColor& background = drawer->getBackgroundColor();
    glClearColor(static_cast<GLfloat>(background.redF()), static_cast<GLfloat>(background.greenF()),
                 static_cast<GLfloat>(background.blueF()), 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45.0, static_cast<double>(width()) / static_cast<double>(height()), scene::SceneDrawer::ZNEAR,
                   scene::SceneDrawer::ZFAR);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_LIGHT0);

    if (scene->getRootNode().isNull() || !scene->tryLock())
        return;
    {
        QMutexLocker locker(mutex);
        if (mustInitialize) {
            const scene::Scene::ElementList elements = *scene->getElementList();
            for (const scene::Scene::ElementPointer& element : elements)
                element->initialize();
            mustInitialize = false;
        }
        drawer->glDraw(scene->getRootNode().get(), focusElement, view, scale, scene::SceneDrawer::DRAW_ALL,
                       axisMask);
        drawModeMarker();
    }
    scene->unlock();
}

// A small square at the lower left in the colour of the element transform mode.
void ScenePanel::drawModeMarker()
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_LINE_SMOOTH);
    GLdouble projection[16];
    GLdouble modelView[16];
    GLint viewport[4];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
    glGetIntegerv(GL_VIEWPORT, viewport);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, viewport[2], 0.0, viewport[3], 1.0, 100.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(5.0f, 5.0f, -90.0f);
    switch (elementTransformMode) {
    case MODE_SCREEN:
        glColor3f(0.0f, 1.0f, 1.0f);
        break;
    case MODE_GLOBAL:
        glColor3f(1.0f, 1.0f, 0.0f);
        break;
    default:
        glColor3f(1.0f, 0.0f, 1.0f);
        break;
    }
    glBegin(GL_QUADS);
    glVertex3f(0.0f, 0.0f, 0.0f);
    glVertex3f(5.0f, 0.0f, 0.0f);
    glVertex3f(5.0f, 5.0f, 0.0f);
    glVertex3f(0.0f, 5.0f, 0.0f);
    glEnd();
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(modelView);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    glDisable(GL_DEPTH_TEST);
    glPopAttrib();
}

void ScenePanel::saveTo(QXmlStreamWriter* writer)
{
    writer->writeStartElement("transform");
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            writer->writeStartElement("entry");
            writer->writeAttribute("col", number(column));
            writer->writeAttribute("row", number(row));
            writer->writeCharacters(number(view(row, column)));
            writer->writeEndElement();
        }
    }
    writer->writeEndElement();
    writer->writeTextElement("scale", number(scale));
    writer->writeTextElement("oldscale", number(oldScale));
}

void ScenePanel::loadFrom(QXmlStreamReader* reader)
{
    Matrix4 loaded = Matrix4::identity();
    while (!reader->atEnd()) {
        const QXmlStreamReader::TokenType token = reader->readNext();
        if (token == QXmlStreamReader::EndElement && reader->name() == QLatin1String("window"))
            break;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (reader->name() == QLatin1String("entry")) {
            const int column = reader->attributes().value("col").toInt(nullptr, 10);
            const int row = reader->attributes().value("row").toInt(nullptr, 10);
            const double value = reader->readElementText().toDouble();
            if (column >= 0 && column < 4 && row >= 0 && row < 4)
                loaded(row, column) = value;
        } else if (reader->name() == QLatin1String("scale")) {
            scale = reader->readElementText().toDouble();
        } else if (reader->name() == QLatin1String("oldscale")) {
            oldScale = reader->readElementText().toDouble();
        }
    }
    view = loaded;
}

// ---------------------------------------------------------------------------------------
// Camera gestures. Element moves with Shift and picking with a plain click are not handled
// here: with Shift held on a focused element the camera stays still.

void ScenePanel::mousePressEvent(QMouseEvent* event)
{
    buttons = static_cast<int>(event->buttons());
    Viewer::getInstance()->setActivePanel(this);
    mouseX = event->pos().x();
    mouseY = event->pos().y();
    if (event->buttons() & Qt::LeftButton) {
        pressX = mouseX;
        pressY = mouseY;
    }
    modifiers = static_cast<int>(event->modifiers());
    event->accept();
}

void ScenePanel::mouseReleaseEvent(QMouseEvent* event)
{
    buttons = static_cast<int>(event->buttons());
    event->accept();
}

void ScenePanel::mouseMoveEvent(QMouseEvent* event)
{
    previousX = mouseX;
    previousY = mouseY;
    mouseX = event->pos().x();
    mouseY = event->pos().y();
    dx = mouseX - previousX;
    dy = mouseY - previousY;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (shift != static_cast<bool>(modifiers & Qt::ShiftModifier)) {
        event->ignore();
        return;
    }
    event->accept();
    if (hasFocusElement && focusElement && shift)
        return;
    const Qt::MouseButtons pressed = event->buttons();
    if (pressed == Qt::RightButton) {
        rotateView(dx, dy, event->modifiers() & Qt::ControlModifier, rightSpeed);
    } else if (pressed == Qt::MiddleButton) {
        view[12] += dx * 3.0 * midSpeed / 100.0;
        view[13] -= dy * 3.0 * midSpeed / 100.0;
        update();
    } else if (pressed == (Qt::LeftButton | Qt::RightButton)) {
        zoomBy(-(leftRightSpeed * 0.005 / 100.0) * dy);
    }
}

void ScenePanel::wheelEvent(QWheelEvent* event)
{
    modifiers = static_cast<int>(event->modifiers());
    event->accept();
    if (hasFocusElement && focusElement && (event->modifiers() & Qt::ShiftModifier))
        return;
    zoomBy((wheelSpeed * 0.0006 / 100.0) * event->angleDelta().y());
}

void ScenePanel::keyReleaseEvent(QKeyEvent* event)
{
    QWidget::keyReleaseEvent(event);
}

// The pan is rescaled with the zoom, so that the point in the middle of the window stays.
void ScenePanel::zoomBy(double step)
{
    oldScale = scale;
    scale += step;
    if (MinimumScale > scale)
        scale = MinimumScale;
    view[12] = view[12] / oldScale * scale;
    view[13] = view[13] / oldScale * scale;
    update();
}

// The axis is left unnormalised: a longer drag turns further about a longer axis.
void ScenePanel::rotateView(int moveX, int moveY, bool aroundViewAxis, double speed)
{
    const double factor = speed * -0.03 / 100.0;
    double angle = 0.0;
    double axis[3] = {0.0, 0.0, 1.0};
    if (aroundViewAxis) {
        angle = moveX * factor;
    } else {
        const int squaredY = moveY * moveY;
        angle = std::sqrt(squaredY + static_cast<double>(moveX) * moveX) * factor;
        axis[0] = moveY;
        axis[1] = moveX;
        axis[2] = 0.0;
    }
    const double s = std::sin(angle * 0.5);
    const double c = std::cos(angle * 0.5);
    const math::Quaternion<double> step(axis[0] * s, axis[1] * s, axis[2] * s, c);
    const math::Quaternion<double> rotated = math::Quaternion<double>::fromMatrix(view) * step;
    const Matrix4 matrix = rotated.toMatrix();
    for (int column = 0; column < 3; ++column)
        view.setColumn(column, matrix.getColumn(column));
    update();
}

} // namespace gui
} // namespace qel
