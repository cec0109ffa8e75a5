#pragma once

#include "kernel/math/matrix.h"
#include "kernel/math/quaternion.h"
#include "kernel/util/zobserver.h"
#include "kernel/util/zpointer.h"
#include "module_scene/gui/lockableglwidget.h"

class QMutex;
class QXmlStreamReader;
class QXmlStreamWriter;

namespace qel {
namespace main {
class Event;
}
namespace scene {
class Scene;
class SceneDrawer;
class SceneElement;
} // namespace scene

namespace gui {

// The GL widget that shows a scene: holds the camera (a view matrix and a zoom scale), owns
// the scene's drawer, keeps the focused element and repaints when the scene changes. A paint
// takes the shared context's mutex (through the base), then tries the scene's lock, then the
// panel's own mutex; a busy scene leaves one blank frame.
class ScenePanel : public LockableGLWidget
{
    Q_OBJECT

public:
    typedef math::Matrix<double, 4, 4> Matrix4;

    enum AXIS { AXIS_X = 1, AXIS_Y = 2, AXIS_Z = 4 };
    enum ELEMENTTRANSFORMMODE { MODE_SCREEN = 0, MODE_GLOBAL = 1, MODE_LOCAL = 2 };

    explicit ScenePanel(const util::ZPointer<scene::Scene>& scene, QWidget* parent = nullptr);
    // Without a scene the panel paints nothing until setScene.
    explicit ScenePanel(QWidget* parent);
    ~ScenePanel() override;

    void setScene(const util::ZPointer<scene::Scene>& scene);
    util::ZPointer<scene::Scene> getScene() const;
    scene::SceneDrawer* getDrawer() const { return drawer; }
    scene::SceneElement* getFocusElement() const { return focusElement; }

    // The camera. None of the setters repaints except setRotation.
    Matrix4& getTransformMatrix() { return view; }
    void setTransformMatrix(const Matrix4& matrix) { view = matrix; }
    const double& getScale() const { return scale; }
    void setScale(const double& value) { scale = value; }
    Matrix4 getScaledTransformMatrix() const;
    // Replaces the rotation, keeps the pan, repaints.
    void setRotation(const math::Quaternion<double>& rotation);
    // Depth is expressed as zoom: z = -200 is scale 1, z = 0 scale 2.
    void setTranslation(double x, double y, double z);
    void resetTransform();

    int getAxisMask() const { return axisMask; }
    int getElementTransformMode() const { return elementTransformMode; }

    // The camera as "transform" (sixteen "entry" elements, row by row), "scale" and
    // "oldscale", written into the element the caller opened.
    virtual void saveTo(QXmlStreamWriter* writer);
    // Reads up to the end of the enclosing "window" element; entries out of range are skipped.
    virtual void loadFrom(QXmlStreamReader* reader);

protected:
    void init();

    void glInit() override;
    void glPaint() override;
    void glResize(int width, int height) override;

    // Right rotates, middle pans, left with right zooms, the wheel zooms: the camera, or with
    // Shift the focused element as a pending transform that the Shift release commits. A left
    // click without movement picks in the scene's selection mode.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    // Told by the scene of every change; may run on any thread.
    class SceneObserver : public util::ZObserver
    {
    public:
        explicit SceneObserver(ScenePanel* panel) : panel(panel) {}
        void update(void* data, void* source) override;

    private:
        ScenePanel* panel;
    };

    ScenePanel(const ScenePanel&) = delete;
    ScenePanel& operator=(const ScenePanel&) = delete;

    void elementFocused(const main::Event* event);
    void sceneRedraw(const main::Event* event);
    void settingsUpdate(const main::Event* event);
    void setFocusElement(scene::SceneElement* element);
    // update() on the application thread, queued from elsewhere.
    void requestRepaint();
    void drawModeMarker();
    void zoomBy(double step);
    static math::Quaternion<double> rotationStep(int moveX, int moveY, bool aroundViewAxis, double speed);
    void rotateView(const math::Quaternion<double>& step);

    bool isElementCase(Qt::KeyboardModifiers eventModifiers) const;
    // Shift newly held on a focused element of an unlocked scene: the move begins.
    void startElementTransform(Qt::KeyboardModifiers eventModifiers);
    Matrix4 conjugated(const Matrix4& matrix) const;
    void zoomElement(bool alt);
    void panElement(bool alt);
    void rotateElement(const math::Quaternion<double>& step, bool alt);
    void wheelElement(int delta, bool alt);
    // A wheel step in eighths of a degree along its dominant axis, so that horizontal wheels
    // and tilted touchpads count, and so does Alt, which the window system may turn into a
    // horizontal step. A touchpad step in pixels only counts two eighths a pixel.
    static int wheelDelta(const QWheelEvent* event);
    // The origin goes by `origin` (in screen terms), the geometry back by its opposite.
    void moveOriginOnly(const Matrix4& origin);
    void commitElementTransform();

    // The nearest intersectable visible element under the press position; the command
    // string for it, empty when nothing is to be sent.
    QString pickCommandString();

    void shiftElementTransformMode();
    void toggleAxis(AXIS axis);
    Matrix4 localTranslation(double x, double y, double z);

    util::ZPointer<scene::Scene> scene;
    scene::SceneDrawer* drawer = nullptr;
    SceneObserver* observer = nullptr;
    bool mustInitialize = false;
    Matrix4 view;
    double scale = 1.0;
    double oldScale = 1.0;
    scene::SceneElement* focusElement = nullptr;
    int hasFocusElement = 0;
    QMutex* mutex = nullptr;
    int mouseX = 0;
    int mouseY = 0;
    int buttons = 0;
    int dx = 0;
    int dy = 0;
    int previousX = 0;
    int previousY = 0;
    int pressX = -1;
    int pressY = -1;
    int modifiers = 0;
    int axisMask = AXIS_X | AXIS_Y | AXIS_Z;
    int elementTransformMode = MODE_SCREEN;
    double wheelSpeed = 100.0;
    double leftRightSpeed = 100.0;
    double rightSpeed = 100.0;
    double midSpeed = 100.0;
};

} // namespace gui
} // namespace qel
