#pragma once

#include <QPointer>

class QOpenGLContext;
class QSurface;

namespace qel {
namespace gui {

// Gives the thread its current GL context back at scope end, for work that makes another
// context current in the middle of a paint (the shared context's list book does): the
// paint goes on in its own context. Nothing current before means nothing current after.
class CurrentContextGuard
{
public:
    CurrentContextGuard();
    ~CurrentContextGuard();
    CurrentContextGuard(const CurrentContextGuard&) = delete;
    CurrentContextGuard& operator=(const CurrentContextGuard&) = delete;

private:
    QPointer<QOpenGLContext> context;
    QSurface* surface;
};

} // namespace gui
} // namespace qel
