#pragma once

#include <QOpenGLWidget>
#include <QPointer>

namespace qel {
namespace gui {

class SharedContext;

// Base of every GL widget of the module: the three GL callbacks run under the shared
// context's mutex and are forwarded to glInit, glPaint and glResize. The first widget to be
// initialised founds the shared context; later ones join its share group.
class LockableGLWidget : public QOpenGLWidget
{
    Q_OBJECT

public:
    // As SharedContext::LockHelper, against the widget's shared context.
    class LockHelper
    {
    public:
        LockHelper(LockableGLWidget* widget, bool lock, bool makeCurrent);
        ~LockHelper();
        LockHelper(const LockHelper&) = default;
        LockHelper& operator=(const LockHelper&) = default;

        LockableGLWidget* getWidget() const { return widget.data(); }

    private:
        QPointer<LockableGLWidget> widget;
    };

    // The context is not owned.
    LockableGLWidget(SharedContext* context, QWidget* parent);

    SharedContext* getSharedContext() const { return sharedContext; }

    void lock();
    void unlock();
    void lockAndMakeCurrent();
    void unlockAndDoneCurrent();
    unsigned int glGenLists(int range);
    void glDeleteLists(unsigned int list);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

    virtual void glInit() {}
    virtual void glPaint() {}
    virtual void glResize(int, int) {}

private:
    SharedContext* sharedContext;
};

} // namespace gui
} // namespace qel
