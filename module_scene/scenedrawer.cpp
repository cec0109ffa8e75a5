#include "module_scene/scenedrawer.h"

#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/glmaterial.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneevents.h"
#include "module_scene/selectedpoint.h"

#include <QSettings>
#include <boost/bind/bind.hpp>
#include <cmath>
#include <qopengl.h>
#include <vector>

namespace qel {
namespace scene {

const double SceneDrawer::ZNEAR = 1.0;
const double SceneDrawer::ZFAR = 1000.0;
const double SceneDrawer::ZOBJECTCENTER = -200.0;

const SceneDrawer::Matrix4* SceneDrawer::mp_CurrentTransform = nullptr;

namespace {

const int ClippingPlaneCount = 6;

// Full intensity of a signed byte colour is 127: 64 is half, 16 an eighth.
GLbyte axisShade(int axisMask, int axisBit)
{
    return (axisMask & axisBit) ? 16 : 64;
}

void setAxisColor(int axis, int axisMask)
{
    const GLbyte shade = axisShade(axisMask, 1 << axis);
    glColor3b(axis == 0 ? 64 : shade, axis == 1 ? 64 : shade, axis == 2 ? 64 : shade);
}

struct Letter
{
    GLenum primitive;
    float vertices[4][2];
};

const Letter AxisLetters[3] = {
    {GL_LINES, {{-0.1f, 0.2f}, {0.1f, -0.2f}, {-0.1f, -0.2f}, {0.1f, 0.2f}}},
    {GL_LINES, {{-0.1f, -0.2f}, {0.1f, 0.2f}, {-0.1f, 0.2f}, {0.0f, 0.0f}}},
    {GL_LINE_STRIP, {{-0.1f, 0.2f}, {0.1f, 0.2f}, {-0.1f, -0.2f}, {0.1f, -0.2f}}},
};

// Matrices and viewport around an overlay in window coordinates.
class SavedView
{
public:
    SavedView()
    {
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
        glGetIntegerv(GL_VIEWPORT, viewport);
    }

    void setWindowProjection() const
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0.0, viewport[2], 0.0, viewport[3], 1.0, 100.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    void restore() const
    {
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(projection);
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixd(modelView);
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    }

private:
    GLdouble projection[16];
    GLdouble modelView[16];
    GLint viewport[4];
};

void glSquare(float size)
{
    glBegin(GL_QUADS);
    glVertex3f(0.0f, 0.0f, 0.0f);
    glVertex3f(size, 0.0f, 0.0f);
    glVertex3f(size, size, 0.0f);
    glVertex3f(0.0f, size, 0.0f);
    glEnd();
}

} // namespace

SceneDrawer::SceneDrawer(const util::ZPointer<Scene>& scene) : scene(scene), backgroundColor("#4c4c4c")
{
    using namespace boost::placeholders;
    main::EventManager::getInstance()->registerEventFunction(
        SETTINGS_CHANGED, new main::EventManager::EventFunction(boost::bind(&SceneDrawer::settingsUpdate, this, _1)),
        this);
    settingsUpdate(nullptr);
}

SceneDrawer::~SceneDrawer()
{
    scene = nullptr;
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

// A stereo disparity of exactly 0 switches stereo off; a negative one only counts as 0.
void SceneDrawer::settingsUpdate(const main::Event*)
{
    QSettings* settings = main::Overseer::getInstance()->getQSettings();
    pointRadius = settings->value("settings/pointradius", 1.0).toDouble();
    const QColor background(settings->value("settings/scenedefaultbackgroundcolor", "#4c4c4c").toString());
    if (background.isValid())
        backgroundColor = background;
    int mode = settings->value("settings/stereomode", 0).toInt();
    if (static_cast<unsigned int>(mode) >= 3u)
        mode = STEREO_OFF;
    int disparity = settings->value("settings/stereodisparity", 0).toInt();
    if (disparity < 0)
        disparity = 0;
    else if (disparity == 0)
        mode = STEREO_OFF;
    stereoMode = mode;
    stereoDisparity = disparity * 0.5;
}

void SceneDrawer::initialize()
{
    glClearColor(static_cast<GLfloat>(backgroundColor.redF()), static_cast<GLfloat>(backgroundColor.greenF()),
                 static_cast<GLfloat>(backgroundColor.blueF()), 0.0f);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
}

void SceneDrawer::resize(int width, int height)
{
    glViewport(0, 0, width, height);
    size = QSize(width, height);
}

double SceneDrawer::aspectRatio() const
{
    return static_cast<double>(size.width()) / static_cast<double>(size.height());
}

const SceneDrawer::Matrix4& SceneDrawer::getCurrentTransform()
{
    return *mp_CurrentTransform;
}

void SceneDrawer::glDraw(SceneElement* root, SceneElement* focus, const Matrix4& view, double scale, int flags,
                         int axisMask)
{
    mp_CurrentTransform = &view;
    if (stereoMode == STEREO_RED_CYAN || stereoMode == STEREO_RED_BLUE) {
        drawStereo(root, view, scale, flags);
    } else {
        placeEye(0.0, view, scale);
        drawPasses(root, view, flags);
    }
    glEnable(GL_DEPTH_TEST);
    glDisableClippingPlanes();
    if ((flags & DRAW_ORIENTATION) && focus && focus->isViewOrientationEnabled()) {
        glPushMatrix();
        glMultMatrixd(focus->getTransformMatrix().data());
        glDrawOrientation(focus->getBoundingSphereDiameter() * 0.5, axisMask);
        glPopMatrix();
    }
    if (flags & DRAW_SELECTEDPOINTS)
        glDrawSelectedPoints();
    if (flags & DRAW_INFOLAYER)
        glDrawInfoLayer(view, 0.0, focus, axisMask);
    mp_CurrentTransform = nullptr;
}

void SceneDrawer::placeEye(double x, const Matrix4& view, double scale) const
{
    glTranslatef(static_cast<GLfloat>(x), 0.0f, static_cast<GLfloat>(ZOBJECTCENTER));
    glMultMatrixd(view.data());
    if (scale != 0.0) {
        const GLfloat s = static_cast<GLfloat>(scale);
        glScalef(s, s, s);
    }
}

void SceneDrawer::drawPasses(SceneElement* root, const Matrix4& view, int flags)
{
    if (flags & DRAW_OPAQUE)
        glDrawScene(root);
    if (flags & DRAW_BLENDED) {
        glEnable(GL_CULL_FACE);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDrawBlendedScene(root, view);
        glDisable(GL_BLEND);
        glDisable(GL_CULL_FACE);
    }
}

// The first eye goes to green and blue (red/cyan) or blue alone (red/blue), the second to
// red with blending on. The red-only mask stays for the overlays until the next frame.
void SceneDrawer::drawStereo(SceneElement* root, const Matrix4& view, double scale, int flags)
{
    placeEye(-stereoDisparity, view, scale);
    glColorMask(GL_FALSE, stereoMode == STEREO_RED_CYAN ? GL_TRUE : GL_FALSE, GL_TRUE, GL_TRUE);
    drawPasses(root, view, flags);
    glClear(GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    placeEye(stereoDisparity, view, scale);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColorMask(GL_TRUE, GL_FALSE, GL_FALSE, GL_TRUE);
    drawPasses(root, view, flags);
    glDisable(GL_BLEND);
}

// The attribute frame of a parent scopes the modifiers among its children.
void SceneDrawer::glDrawScene(SceneElement* element)
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    if (element->getOpacity() == 1.0)
        element->draw();
    if (element->shouldDrawChilds()) {
        const SceneElement::ElementList childs = *element->getChilds();
        for (const SceneElement::Pointer& child : childs)
            glDrawScene(child.get());
    }
    glPopAttrib();
}

// Farthest first. Every queue entry draws all elements of its depth, so elements at an
// equal depth are drawn once per entry.
void SceneDrawer::glDrawBlendedScene(SceneElement* root, const Matrix4& view)
{
    DepthQueue queue;
    DepthMap map;
    glDrawBlendedSceneInternal(root, view, &queue, &map);
    while (!queue.empty()) {
        const double depth = queue.top();
        const auto range = map.equal_range(depth);
        for (auto entry = range.first; entry != range.second; ++entry) {
            SceneElement* element = entry->second;
            glPushAttrib(GL_ALL_ATTRIB_BITS);
            SceneElement* parent = element->getParentSceneElement().get();
            if (parent) {
                glDrawParentModifiers(parent);
                if (element->isModifier())
                    element->draw();
            }
            element->draw();
            glPopAttrib();
        }
        queue.pop();
    }
}

void SceneDrawer::glDrawBlendedSceneInternal(SceneElement* element, const Matrix4& view, DepthQueue* queue,
                                             DepthMap* map)
{
    if (1.0 > element->getOpacity()) {
        const Matrix4 placed = view * element->getTransformMatrix();
        const double depth = placed[14];
        queue->push(depth);
        map->insert(std::make_pair(depth, element));
    }
    if (!element->shouldDrawChilds())
        return;
    for (const SceneElement::Pointer& child : *element->getChilds())
        glDrawBlendedSceneInternal(child.get(), view, queue, map);
}

void SceneDrawer::glDrawParentModifiers(SceneElement* element)
{
    SceneElement* parent = element->getParentSceneElement().get();
    if (!parent)
        return;
    glDrawParentModifiers(parent);
    if (element->isModifier())
        element->draw();
}

// Overlays are not clipped: the planes that elements took are switched off.
void SceneDrawer::glDisableClippingPlanes()
{
    const bool* available = scene->getAvailableClippingPlanes();
    for (int plane = 0; plane < ClippingPlaneCount; ++plane) {
        if (!available[plane])
            glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + plane));
    }
}

void SceneDrawer::glDrawOrientation(double size, int axisMask)
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glPushMatrix();
    if (size > 0.0) {
        const GLfloat s = static_cast<GLfloat>(size);
        glScalef(s, s, s);
    }
    glLineWidth(2.0f);
    glBegin(GL_LINES);
    for (int axis = 0; axis < 3; ++axis) {
        setAxisColor(axis, axisMask);
        glVertex3f(0.0f, 0.0f, 0.0f);
        glVertex3f(axis == 0 ? 1.0f : 0.0f, axis == 1 ? 1.0f : 0.0f, axis == 2 ? 1.0f : 0.0f);
    }
    glEnd();
    glLineWidth(1.0f);
    glPopMatrix();
    glPopAttrib();
}

// Corner axes and the lock marker, in window coordinates at the lower left.
void SceneDrawer::glDrawInfoLayer(const Matrix4& view, double, SceneElement*, int axisMask)
{
    Matrix4 rotation(view);
    rotation[12] = rotation[13] = rotation[14] = 0.0;

    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_LINE_SMOOTH);
    const SavedView saved;
    saved.setWindowProjection();
    glTranslatef(45.0f, 45.0f, -50.0f);
    glMultMatrixd(rotation.data());
    const Matrix4 inverse = rotation.getInverse();

    glDrawOrientation(30.0, axisMask);
    glScalef(30.0f, 30.0f, 30.0f);
    glLineWidth(2.0f);
    drawAxisLetters(inverse, axisMask);
    glLineWidth(1.0f);
    glLoadIdentity();
    glTranslatef(0.0f, 0.0f, -90.0f);
    drawLockMarker();

    saved.restore();
    glDisable(GL_DEPTH_TEST);
    glPopAttrib();
}

// Each letter sits beyond the tip of its axis and faces the viewer.
void SceneDrawer::drawAxisLetters(const Matrix4& inverse, int axisMask) const
{
    for (int axis = 0; axis < 3; ++axis) {
        glPushMatrix();
        glTranslatef(axis == 0 ? 1.3f : 0.0f, axis == 1 ? 1.3f : 0.0f, axis == 2 ? 1.3f : 0.0f);
        glMultMatrixd(inverse.data());
        setAxisColor(axis, axisMask);
        const Letter& letter = AxisLetters[axis];
        glBegin(letter.primitive);
        for (const auto& vertex : letter.vertices)
            glVertex3f(vertex[0], vertex[1], 0.0f);
        glEnd();
        glPopMatrix();
    }
}

void SceneDrawer::drawLockMarker() const
{
    if (scene->isTransformLocked())
        glColor3b(64, 16, 16);
    else
        glColor3b(16, 64, 16);
    glSquare(5.0f);
}

void SceneDrawer::glDrawSelectedPoints()
{
    Scene::PointList* points = scene->getSelectedPoints();
    if (points->empty())
        return;
    const double scaling = scene->getGlobalScalingFactor();
    const double radius = pointRadius / scaling;
    const GLfloat g = static_cast<GLfloat>(scaling);
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushMatrix();
    for (const Scene::PointPointer& point : *points) {
        if (point->isHidden())
            continue;
        glPushMatrix();
        if (point->isSelected())
            GLMaterial::applyColor(0.9f, 0.0f, 0.0f, 1.0f);
        else
            GLMaterial::applyColor(0.0f, 0.9f, 0.0f, 1.0f);
        glScalef(g, g, g);
        const SelectedPoint::Vector4& position = point->getTransformedPoint();
        glTranslatef(static_cast<GLfloat>(position[0]), static_cast<GLfloat>(position[1]),
                     static_cast<GLfloat>(position[2]));
        glSolidSphere(radius, 8, 3);
        glPopMatrix();
    }
    glPopMatrix();
    glPopAttrib();
}

// Fans at the poles, quad strips between the inner rings; stack 0 is the north pole.
void SceneDrawer::glSolidSphere(double radius, int slices, int stacks)
{
    if (slices < 1 || stacks < 2)
        return;
    std::vector<double> sliceSin(slices + 1), sliceCos(slices + 1);
    for (int j = 0; j <= slices; ++j) {
        const double angle = 2.0 * M_PI * j / slices;
        sliceSin[j] = std::sin(angle);
        sliceCos[j] = std::cos(angle);
    }
    std::vector<double> stackSin(stacks + 1), stackCos(stacks + 1);
    for (int i = 0; i <= stacks; ++i) {
        const double angle = M_PI * i / stacks;
        stackSin[i] = std::sin(angle);
        stackCos[i] = std::cos(angle);
    }
    auto vertex = [&](int stack, int slice) {
        const double x = sliceCos[slice] * stackSin[stack];
        const double y = sliceSin[slice] * stackSin[stack];
        const double z = stackCos[stack];
        glNormal3d(x, y, z);
        glVertex3d(x * radius, y * radius, z * radius);
    };

    glBegin(GL_TRIANGLE_FAN);
    glNormal3d(0.0, 0.0, 1.0);
    glVertex3d(0.0, 0.0, radius);
    for (int j = 0; j <= slices; ++j)
        vertex(1, j);
    glEnd();
    for (int i = 1; i < stacks - 1; ++i) {
        glBegin(GL_QUAD_STRIP);
        for (int j = 0; j <= slices; ++j) {
            vertex(i, j);
            vertex(i + 1, j);
        }
        glEnd();
    }
    glBegin(GL_TRIANGLE_FAN);
    glNormal3d(0.0, 0.0, -1.0);
    glVertex3d(0.0, 0.0, -radius);
    for (int j = slices; j >= 0; --j)
        vertex(stacks - 1, j);
    glEnd();
}

} // namespace scene
} // namespace qel
