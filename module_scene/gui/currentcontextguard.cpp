#include "module_scene/gui/currentcontextguard.h"

#include <QOpenGLContext>

namespace qel {
namespace gui {

CurrentContextGuard::CurrentContextGuard() : context(QOpenGLContext::currentContext()), surface(nullptr)
{
    if (context)
        surface = context->surface();
}

CurrentContextGuard::~CurrentContextGuard()
{
    QOpenGLContext* current = QOpenGLContext::currentContext();
    if (current == context.data() && (!current || current->surface() == surface))
        return;
    if (context && surface)
        context->makeCurrent(surface);
    else if (current)
        current->doneCurrent();
}

} // namespace gui
} // namespace qel
