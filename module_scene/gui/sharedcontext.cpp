#include "module_scene/gui/sharedcontext.h"

#include "kernel/log/logger.h"

#include <QMutex>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

namespace qel {
namespace gui {

namespace {

const unsigned int NEVER_GENERATED_LIST = 0xFFFFFFFFu;

} // namespace

SharedContext::LockHelper::LockHelper(SharedContext* context, bool lock, bool makeCurrent) : context(context)
{
    if (!lock || !context)
        return;
    if (makeCurrent)
        context->lockAndMakeCurrent();
    else
        context->lock();
}

SharedContext::LockHelper::~LockHelper()
{
    if (!context.isNull())
        context->unlock();
}

SharedContext::SharedContext()
    : mutex(new QMutex(QMutex::Recursive)), context(nullptr), surface(nullptr), frameBuffers(false)
{
}

SharedContext::~SharedContext()
{
    const bool current = context && surface;
    lock();
    if (current)
        makeCurrent();
    deleteBookedLists();
    if (context)
        context->doneCurrent();
    if (surface) {
        surface->destroy();
        delete surface;
    }
    delete context;
    unlock();
    delete mutex;
}

void SharedContext::deleteBookedLists()
{
    if (!QOpenGLContext::currentContext())
        return;
    for (const auto& entry : lists) {
        if (::glIsList(entry.first))
            ::glDeleteLists(entry.first, entry.second);
    }
}

void SharedContext::setContext(QOpenGLContext* other)
{
    const QSurfaceFormat format = other->format();
    if (!context)
        createContext(other);
    if (surface && surface->format() == format)
        return;
    if (surface)
        surface->destroy();
    else
        surface = new QOffscreenSurface(nullptr);
    surface->setFormat(format);
    surface->create();
}

void SharedContext::createContext(QOpenGLContext* other)
{
    context = new QOpenGLContext;
    context->setFormat(other->format());
    context->setShareContext(other);
    context->setScreen(other->screen());
    if (!context->create())
        log::Logger::log(1000, "module_scene/gui/sharedcontext", 103, "qel::gui::SharedContext::setContext", nullptr,
                         "Could not create OpenGL context!");
    frameBuffers = context->functions()->hasOpenGLFeature(QOpenGLFunctions::Framebuffers);
}

bool SharedContext::makeCurrent()
{
    if (!context || !surface)
        return false;
    return context->makeCurrent(surface);
}

void SharedContext::doneCurrent()
{
    if (context)
        context->doneCurrent();
}

void SharedContext::lock()
{
    mutex->lock();
}

bool SharedContext::tryLock()
{
    return mutex->tryLock();
}

void SharedContext::unlock()
{
    mutex->unlock();
}

void SharedContext::lockAndMakeCurrent()
{
    lock();
    if (context && surface)
        makeCurrent();
}

void SharedContext::unlockAndDoneCurrent()
{
    doneCurrent();
    unlock();
}

// Without any current context there is nothing to generate in: 0, GL's own failure value.
unsigned int SharedContext::glGenLists(int range)
{
    LockHelper guard(this, true, true);
    if (!QOpenGLContext::currentContext())
        return 0;
    const unsigned int first = ::glGenLists(range);
    lists.emplace(first, range);
    return first;
}

void SharedContext::glDeleteLists(unsigned int list)
{
    if (list == NEVER_GENERATED_LIST)
        return;
    LockHelper guard(this, true, true);
    const auto entry = lists.find(list);
    if (entry == lists.end()) {
        log::Logger::log(1000, "module_scene/gui/sharedcontext", 170, "qel::gui::SharedContext::glDeleteLists",
                         nullptr, "Display list %u is not known!", list);
        return;
    }
    if (QOpenGLContext::currentContext() && ::glIsList(entry->first))
        ::glDeleteLists(entry->first, entry->second);
    lists.erase(entry);
}

int SharedContext::bookedRange(unsigned int list) const
{
    const auto entry = lists.find(list);
    return entry == lists.end() ? 0 : entry->second;
}

} // namespace gui
} // namespace qel
