#pragma once

#include "kernel/math/matrix.h"
#include "kernel/util/zpointer.h"

#include <QColor>
#include <QSize>
#include <deque>
#include <functional>
#include <map>
#include <queue>

namespace qel {
namespace main {
class Event;
}
namespace scene {

class Scene;
class SceneElement;

// Turns a scene into GL calls for one panel: an opaque pass over the tree, a blended pass
// over the translucent elements from back to front, then the overlays (orientation axes of
// the focused element, picked points, info layer). In stereo the two scene passes run once
// per eye under colour masks. The panel owns projection, clearing and the scene lock; glDraw
// expects an identity model-view matrix.
class SceneDrawer
{
public:
    typedef math::Matrix<double, 4, 4> Matrix4;

    // Bits of the flags of glDraw.
    enum DRAWFLAG {
        DRAW_OPAQUE = 1,
        DRAW_BLENDED = 2,
        DRAW_INFOLAYER = 4,
        DRAW_SELECTEDPOINTS = 8,
        DRAW_ORIENTATION = 16,
        DRAW_ALL = 65535
    };
    enum STEREOMODE { STEREO_OFF = 0, STEREO_RED_CYAN = 1, STEREO_RED_BLUE = 2 };

    static const double ZNEAR;
    static const double ZFAR;
    static const double ZOBJECTCENTER;

    explicit SceneDrawer(const util::ZPointer<Scene>& scene);
    virtual ~SceneDrawer();

    void initialize();
    void resize(int width, int height);
    const QSize& getSize() const { return size; }
    double aspectRatio() const;
    const QColor& getBackgroundColor() const { return backgroundColor; }
    double getPointRadius() const { return pointRadius; }
    int getStereoMode() const { return stereoMode; }
    // Half the eye separation, in view units.
    double getStereoDisparity() const { return stereoDisparity; }

    void glDraw(SceneElement* root, SceneElement* focus, const Matrix4& view, double scale, int flags, int axisMask);
    void glDrawScene(SceneElement* element);
    void glDrawBlendedScene(SceneElement* root, const Matrix4& view);
    // Replays the modifiers on the chain of ancestors, root excluded, outermost first.
    void glDrawParentModifiers(SceneElement* element);
    void glDisableClippingPlanes();
    void glDrawInfoLayer(const Matrix4& view, double unused, SceneElement* focus, int axisMask);
    void glDrawOrientation(double size, int axisMask);
    void glDrawSelectedPoints();

    // The view of the frame being drawn; only valid inside glDraw.
    static const Matrix4& getCurrentTransform();
    // A lit solid sphere in immediate mode about the origin.
    static void glSolidSphere(double radius, int slices, int stacks);

private:
    typedef std::priority_queue<double, std::deque<double>, std::greater<double>> DepthQueue;
    typedef std::multimap<double, SceneElement*> DepthMap;

    SceneDrawer(const SceneDrawer&) = delete;
    SceneDrawer& operator=(const SceneDrawer&) = delete;

    void glDrawBlendedSceneInternal(SceneElement* element, const Matrix4& view, DepthQueue* queue, DepthMap* map);
    void settingsUpdate(const main::Event* event);
    void placeEye(double x, const Matrix4& view, double scale) const;
    void drawPasses(SceneElement* root, const Matrix4& view, int flags);
    void drawStereo(SceneElement* root, const Matrix4& view, double scale, int flags);
    void drawAxisLetters(const Matrix4& inverse, int axisMask) const;
    void drawLockMarker() const;

    static const Matrix4* mp_CurrentTransform;

    util::ZPointer<Scene> scene;
    QSize size;
    double pointRadius = 1.0;
    QColor backgroundColor;
    int stereoMode = STEREO_OFF;
    double stereoDisparity = 0.3;
};

} // namespace scene
} // namespace qel
