#include "module_scene/gui/lockableglwidget.h"

#include "module_scene/gui/sharedcontext.h"

#include <QOpenGLContext>

namespace qel {
namespace gui {

LockableGLWidget::LockHelper::LockHelper(LockableGLWidget* widget, bool lock, bool makeCurrent) : widget(widget)
{
    if (!lock || !widget)
        return;
    if (makeCurrent)
        widget->lockAndMakeCurrent();
    else
        widget->lock();
}

LockableGLWidget::LockHelper::~LockHelper()
{
    if (!widget.isNull())
        widget->unlock();
}

LockableGLWidget::LockableGLWidget(SharedContext* context, QWidget* parent)
    : QOpenGLWidget(parent), sharedContext(context)
{
}

void LockableGLWidget::lock()
{
    sharedContext->lock();
}

void LockableGLWidget::unlock()
{
    sharedContext->unlock();
}

void LockableGLWidget::lockAndMakeCurrent()
{
    sharedContext->lockAndMakeCurrent();
}

void LockableGLWidget::unlockAndDoneCurrent()
{
    sharedContext->unlockAndDoneCurrent();
}

unsigned int LockableGLWidget::glGenLists(int range)
{
    return sharedContext->glGenLists(range);
}

void LockableGLWidget::glDeleteLists(unsigned int list)
{
    sharedContext->glDeleteLists(list);
}

// The widget's context is current here; the first widget's context founds the share group.
void LockableGLWidget::initializeGL()
{
    lock();
    QOpenGLContext* widgetContext = context();
    if (sharedContext->hasContext())
        widgetContext->setShareContext(sharedContext->glContext());
    else
        sharedContext->setContext(widgetContext);
    glInit();
    unlock();
}

void LockableGLWidget::paintGL()
{
    lock();
    glPaint();
    unlock();
}

void LockableGLWidget::resizeGL(int width, int height)
{
    lock();
    glResize(width, height);
    unlock();
}

} // namespace gui
} // namespace qel
