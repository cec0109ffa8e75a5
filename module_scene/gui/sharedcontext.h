#pragma once

#include <QObject>
#include <QPointer>
#include <map>

class QMutex;
class QOffscreenSurface;
class QOpenGLContext;

namespace qel {
namespace gui {

// The one GL share group of the module: a private context that shares with the first widget
// context, an off-screen surface to make it current outside any paint, the recursive mutex
// that serialises every use of GL in the module, and the book of display lists made through
// it. Lock order in a paint: this mutex, then the scene, then the panel's own.
class SharedContext : public QObject
{
    Q_OBJECT

public:
    // Locks on construction (with or without making the context current) and unlocks on
    // destruction while the context object lives; it never calls doneCurrent. Built with
    // lock false it still unlocks: the caller then holds the mutex already.
    class LockHelper
    {
    public:
        LockHelper(SharedContext* context, bool lock, bool makeCurrent);
        ~LockHelper();
        LockHelper(const LockHelper&) = default;
        LockHelper& operator=(const LockHelper&) = default;

        SharedContext* getContext() const { return context.data(); }

    private:
        QPointer<SharedContext> context;
    };

    SharedContext();
    // Deletes every list still in the book, then the context and the surface.
    ~SharedContext() override;

    // Founds the private context from the first widget context, or adapts the surface to a
    // new format. The caller holds the mutex.
    void setContext(QOpenGLContext* other);

    QOpenGLContext* glContext() const { return context; }
    bool hasContext() const { return context != nullptr; }
    bool hasFBO() const { return frameBuffers; }

    // Neither locks nor unlocks.
    bool makeCurrent();
    void doneCurrent();

    void lock();
    // Takes the mutex only if it is free (or already held by this thread).
    bool tryLock();
    void unlock();
    // Makes current only when there is a context; without one it just locks.
    void lockAndMakeCurrent();
    void unlockAndDoneCurrent();

    // Display lists of the share group, booked here by their first name.
    unsigned int glGenLists(int range);
    void glDeleteLists(unsigned int list);
    // The range booked under a first name, 0 when there is none.
    int bookedRange(unsigned int list) const;

private:
    void createContext(QOpenGLContext* other);
    void deleteBookedLists();

    QMutex* mutex;
    std::map<unsigned int, int> lists;
    QOpenGLContext* context;
    QOffscreenSurface* surface;
    bool frameBuffers;
};

} // namespace gui
} // namespace qel
