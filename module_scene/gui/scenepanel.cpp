#include "module_scene/gui/scenepanel.h"

#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "kernel/log/logger.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "module_scene/commands/transform.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scene.h"
#include "module_scene/scenedrawer.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"
#include "module_scene/scenevcgmodel.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
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
#include <cstdlib>
#include <limits>

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
// Gestures. Without Shift they move the camera; with Shift on a focused element they add
// pending transforms to it, expressed in screen terms and carried into the world through the
// camera (conjugated). Releasing Shift turns the whole move into one command.

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
    startElementTransform(event->modifiers());
    modifiers = static_cast<int>(event->modifiers());
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
    const bool elementCase = isElementCase(event->modifiers());
    if (elementCase && scene->isTransformLocked())
        return;
    const bool alt = event->modifiers() & Qt::AltModifier;
    const Qt::MouseButtons pressed = event->buttons();
    if (pressed == Qt::RightButton) {
        const math::Quaternion<double> step =
            rotationStep(dx, dy, event->modifiers() & Qt::ControlModifier, rightSpeed);
        if (elementCase)
            rotateElement(step, alt);
        else
            rotateView(step);
    } else if (pressed == Qt::MiddleButton) {
        if (elementCase) {
            panElement(alt);
            return;
        }
        view[12] += dx * 3.0 * midSpeed / 100.0;
        view[13] -= dy * 3.0 * midSpeed / 100.0;
        update();
    } else if (pressed == (Qt::LeftButton | Qt::RightButton)) {
        if (elementCase)
            zoomElement(alt);
        else
            zoomBy(-(leftRightSpeed * 0.005 / 100.0) * dy);
    }
}

void ScenePanel::wheelEvent(QWheelEvent* event)
{
    startElementTransform(event->modifiers());
    modifiers = static_cast<int>(event->modifiers());
    event->accept();
    const int delta = wheelDelta(event);
    if (!isElementCase(event->modifiers())) {
        zoomBy((wheelSpeed * 0.0006 / 100.0) * delta);
        return;
    }
    if (scene->isTransformLocked())
        return;
    wheelElement(delta, event->modifiers() & Qt::AltModifier);
}

void ScenePanel::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Shift) {
        QWidget::keyReleaseEvent(event);
        return;
    }
    if (focusElement && (modifiers & Qt::ShiftModifier) && !scene.isNull() && !scene->isTransformLocked()) {
        event->accept();
        commitElementTransform();
    }
}

void ScenePanel::mouseReleaseEvent(QMouseEvent* event)
{
    buttons = static_cast<int>(event->buttons());
    event->accept();
    if (event->pos().x() != pressX || event->pos().y() != pressY || event->button() != Qt::LeftButton
        || scene.isNull())
        return;
    const QString command = pickCommandString();
    if (!command.isEmpty())
        main::Overseer::getInstance()->executeCommand(command, main::Command::EXECUTE_SYNCHRONOUS, true);
    update();
}

bool ScenePanel::isElementCase(Qt::KeyboardModifiers eventModifiers) const
{
    return hasFocusElement && focusElement && (eventModifiers & Qt::ShiftModifier) && !scene.isNull();
}

void ScenePanel::startElementTransform(Qt::KeyboardModifiers eventModifiers)
{
    if (!focusElement || scene.isNull() || !(eventModifiers & Qt::ShiftModifier) || scene->isTransformLocked()
        || (modifiers & Qt::ShiftModifier))
        return;
    focusElement->transformStart(true);
    grabKeyboard();
}

void ScenePanel::commitElementTransform()
{
    focusElement->transformFinish(nullptr);
    modifiers &= ~static_cast<int>(Qt::ShiftModifier);
    releaseKeyboard();
    main::Command* command = commands::scene::Transform::getTransformCommand(focusElement);
    main::Overseer::getInstance()->getCommandProcessor()->processCommand(command, command->getExecutionMode(), true);
}

ScenePanel::Matrix4 ScenePanel::conjugated(const Matrix4& matrix) const
{
    return view.getInverse() * matrix * view;
}

void ScenePanel::moveOriginOnly(const Matrix4& origin)
{
    Matrix4 geometry = Matrix4::identity();
    for (int index = 12; index < 15; ++index)
        geometry[index] = -origin[index];
    *focusElement *= conjugated(origin);
    update();
    *focusElement += conjugated(geometry);
}

void ScenePanel::zoomElement(bool alt)
{
    if (alt && focusElement->isOriginChangeable()) {
        Matrix4 origin = Matrix4::identity();
        origin[14] = dy * 0.5 * leftRightSpeed / 100.0;
        moveOriginOnly(origin);
        return;
    }
    Matrix4 step = Matrix4::identity();
    step[14] = -dy * 0.5 * leftRightSpeed / 100.0;
    *focusElement += conjugated(step);
}

void ScenePanel::panElement(bool alt)
{
    if (alt && focusElement->isOriginChangeable()) {
        Matrix4 origin = Matrix4::identity();
        origin[12] = -dx * 3.0 * midSpeed / 100.0;
        origin[13] = dy * 3.0 * midSpeed / 100.0;
        moveOriginOnly(origin);
        return;
    }
    Matrix4 step = Matrix4::identity();
    step[12] = dx * 3.0 * midSpeed / 100.0;
    step[13] = -dy * 3.0 * midSpeed / 100.0;
    if (elementTransformMode == MODE_SCREEN || elementTransformMode == MODE_GLOBAL) {
        const int bits[3] = {AXIS_X, AXIS_Y, AXIS_Z};
        for (int axis = 0; axis < 3; ++axis) {
            if (!(axisMask & bits[axis]))
                step[12 + axis] = 0.0;
        }
        *focusElement += elementTransformMode == MODE_SCREEN ? conjugated(step) : step;
    } else if (elementTransformMode == MODE_LOCAL) {
        step.dump("trans:");
        step = step * focusElement->getCompleteTransformMatrix();
        step.dump("trans * m");
        *focusElement += step;
    }
}

// The step turns about a screen axis; conjugating it with the camera's rotation turns the
// element about the same axis as seen on screen.
void ScenePanel::rotateElement(const math::Quaternion<double>& step, bool alt)
{
    const math::Quaternion<double> camera = math::Quaternion<double>::fromMatrix(view.getTranspose());
    math::Quaternion<double> masked = step;
    const int bits[3] = {AXIS_X, AXIS_Y, AXIS_Z};
    for (int axis = 0; axis < 3; ++axis) {
        if (!(axisMask & bits[axis]))
            masked[axis] = 0.0;
    }
    if (alt)
        return;
    const math::Quaternion<double> rotation = camera.getInverse() * masked * camera;
    *focusElement += rotation.toMatrix();
}

int ScenePanel::wheelDelta(const QWheelEvent* event)
{
    auto dominant = [](const QPoint& delta) {
        return std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
    };
    const QPoint angle = event->angleDelta();
    if (!angle.isNull())
        return dominant(angle);
    // A notch of 120 scrolls about 60 pixels.
    return dominant(event->pixelDelta()) * 2;
}

// The origin step uses the single-precision 0.2, the geometry step the double one.
void ScenePanel::wheelElement(int delta, bool alt)
{
    if (alt && focusElement->isOriginChangeable()) {
        Matrix4 origin = Matrix4::identity();
        origin[14] = delta * static_cast<double>(0.2f) * wheelSpeed / 100.0;
        moveOriginOnly(origin);
        return;
    }
    Matrix4 step = Matrix4::identity();
    step[14] = delta * -0.2 * wheelSpeed / 100.0;
    *focusElement += conjugated(step);
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
math::Quaternion<double> ScenePanel::rotationStep(int moveX, int moveY, bool aroundViewAxis, double speed)
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
    return math::Quaternion<double>(axis[0] * s, axis[1] * s, axis[2] * s, c);
}

void ScenePanel::rotateView(const math::Quaternion<double>& step)
{
    const math::Quaternion<double> rotated = math::Quaternion<double>::fromMatrix(view) * step;
    const Matrix4 matrix = rotated.toMatrix();
    for (int column = 0; column < 3; ++column)
        view.setColumn(column, matrix.getColumn(column));
    update();
}

// ---------------------------------------------------------------------------------------
// Picking. The ray runs through the press position from the near to the far plane of the
// matrices the last frame left.

namespace {

struct PickResult
{
    scene::SceneElement* element = nullptr;
    const scene::CFaceO* face = nullptr;
    scene::SceneVCGModel::Point point;
    double distance = std::numeric_limits<double>::max();
};

void pickAlong(const scene::Scene::ElementList& elements, const scene::SceneVCGModel::Line& line, int type,
               PickResult& best)
{
    for (const scene::Scene::ElementPointer& element : elements) {
        if (!element->isIntersectable() || !element->isVisible())
            continue;
        if (element->getTypeName() == scene::SceneVCGModel::TypeName) {
            auto* model = static_cast<scene::SceneVCGModel*>(element.get());
            const scene::CFaceO* face = nullptr;
            scene::SceneVCGModel::Point point;
            double distance = 0.0;
            if (model->intersect(line, &face, point, distance, type == scene::Scene::SELECT_POINTS)
                && distance < best.distance) {
                best.element = model;
                best.face = face;
                best.point = point;
                best.distance = distance;
            }
        } else if (type == scene::Scene::SELECT_ELEMENTS) {
            const scene::SceneElement::Vector4 start(line.start[0], line.start[1], line.start[2], 1.0);
            const scene::SceneElement::Vector4 end(line.end[0], line.end[1], line.end[2], 1.0);
            double distance = 0.0;
            if (element->intersect(start, end, &distance) && distance < best.distance) {
                best.element = element.get();
                best.face = nullptr;
                best.distance = distance;
            }
        }
    }
}

QString commandFor(const PickResult& best, const QString& command, int type)
{
    auto* model = dynamic_cast<scene::SceneVCGModel*>(best.element);
    const QString name = best.element->getName();
    const auto faceIndex = [&]() {
        return static_cast<qlonglong>(best.face - model->getMeshModel()->cm.face.data());
    };
    switch (type) {
    case scene::Scene::SELECT_ELEMENTS:
        return QString("%1([%2])").arg(command).arg(name);
    case scene::Scene::SELECT_POINTS:
    case scene::Scene::SELECT_POINTS_FREE:
        if (model && best.face)
            return QString("%6(%1,[%2,%3,%4],%5)")
                .arg(name)
                .arg(best.point[0])
                .arg(best.point[1])
                .arg(best.point[2])
                .arg(faceIndex())
                .arg(command);
        return QString("%5(%1,%2,%3,%4)")
            .arg(name)
            .arg(best.point[0])
            .arg(best.point[1])
            .arg(best.point[2])
            .arg(command);
    case scene::Scene::SELECT_FACES:
        if (model && best.face)
            return QString("%1(%2,%3)").arg(command).arg(name).arg(faceIndex());
        return QString();
    default:
        return QString();
    }
}

} // namespace

QString ScenePanel::pickCommandString()
{
    const QString command = scene->getCurrentSelectionCommand();
    const int type = scene->getCurrentSelectionType();
    if (command.isEmpty() || type == scene::Scene::SELECT_NOTHING)
        return QString();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    PickResult best;
    {
        QMutexLocker locker(mutex);
        makeCurrent();
        GLint viewport[4];
        GLdouble modelView[16];
        GLdouble projection[16];
        glGetIntegerv(GL_VIEWPORT, viewport);
        glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        const double winY = viewport[3] - pressY;
        scene::SceneVCGModel::Line line;
        gluUnProject(pressX, winY, 0.0, modelView, projection, viewport, &line.start[0], &line.start[1],
                     &line.start[2]);
        gluUnProject(pressX, winY, 1.0, modelView, projection, viewport, &line.end[0], &line.end[1], &line.end[2]);
        pickAlong(*scene->getElementList(), line, type, best);
    }
    QGuiApplication::restoreOverrideCursor();
    if (!best.element)
        return QString();
    return commandFor(best, command, type);
}

// ---------------------------------------------------------------------------------------
// The element transform mode and the axis mask.

void ScenePanel::shiftElementTransformMode()
{
    static const char* const Function = "qel::gui::ScenePanel::shiftElementTransformMode";
    switch (elementTransformMode) {
    case MODE_SCREEN:
        elementTransformMode = MODE_GLOBAL;
        log::Logger::log(4000, "module_scene/gui/scenepanel", 1021, Function, nullptr, "Transformmode: GLOBAL");
        break;
    case MODE_GLOBAL:
        elementTransformMode = MODE_LOCAL;
        log::Logger::log(4000, "module_scene/gui/scenepanel", 1025, Function, nullptr, "Transformmode: LOCAL");
        break;
    case MODE_LOCAL:
        elementTransformMode = MODE_SCREEN;
        log::Logger::log(4000, "module_scene/gui/scenepanel", 1029, Function, nullptr, "Transformmode: SCREEN");
        break;
    default:
        log::Logger::log(1000, "module_scene/gui/scenepanel", 1033, Function, nullptr,
                         "Unknown element transform mode");
        break;
    }
    update();
}

void ScenePanel::toggleAxis(AXIS axis)
{
    if (axisMask & axis)
        axisMask &= ~static_cast<int>(axis);
    else
        axisMask |= axis;
    update();
}

ScenePanel::Matrix4 ScenePanel::localTranslation(double x, double y, double z)
{
    Matrix4 rotation = focusElement->getTransformMatrix();
    rotation.setColumn(3, Matrix4::identity().getColumn(3));
    Matrix4 translation = Matrix4::identity();
    translation[12] = static_cast<float>(x);
    translation[13] = static_cast<float>(y);
    translation[14] = static_cast<float>(z);
    return rotation.getInverse() * view.getInverse() * translation * view * rotation;
}

} // namespace gui
} // namespace qel
