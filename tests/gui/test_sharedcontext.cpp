#include "module_scene/gui/lockableglwidget.h"
#include "module_scene/gui/sharedcontext.h"
#include "support/logcapture.h"
#include "test_meshrenderoffscreen.h"

#include <QApplication>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

using qel::gui::LockableGLWidget;
using qel::gui::SharedContext;
using namespace qel::test;

namespace {

// Whether another thread could take the context's mutex right now.
bool freeForOtherThreads(SharedContext& context)
{
    std::atomic<bool> taken{false};
    QThread* probe = QThread::create([&context, &taken]() {
        taken = context.tryLock();
        if (taken)
            context.unlock();
    });
    probe->start();
    probe->wait();
    delete probe;
    return taken;
}

// Records its callbacks and whether the shared mutex was held while they ran.
class RecordingWidget : public LockableGLWidget
{
public:
    explicit RecordingWidget(SharedContext* context) : LockableGLWidget(context, nullptr) { resize(32, 32); }

    int initCount = 0;
    int paintCount = 0;
    int resizeCount = 0;
    bool alwaysLocked = true;

protected:
    void glInit() override
    {
        ++initCount;
        noteLock();
    }
    void glPaint() override
    {
        ++paintCount;
        noteLock();
        glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    void glResize(int, int) override
    {
        ++resizeCount;
        noteLock();
    }

private:
    void noteLock() { alwaysLocked = alwaysLocked && !freeForOtherThreads(*getSharedContext()); }
};

} // namespace

TEST(SharedContext, WithoutAContextNothingIsCurrentAndNothingFails)
{
    SharedContext shared;
    EXPECT_FALSE(shared.hasContext());
    EXPECT_EQ(nullptr, shared.glContext());
    EXPECT_FALSE(shared.hasFBO());
    EXPECT_FALSE(shared.makeCurrent());
    shared.lockAndMakeCurrent();
    EXPECT_FALSE(freeForOtherThreads(shared));
    shared.unlockAndDoneCurrent();
    EXPECT_TRUE(freeForOtherThreads(shared));

    LogCapture log;
    shared.glDeleteLists(0xFFFFFFFFu);
    EXPECT_TRUE(log.records().empty()) << "the never-generated name is ignored silently";
    shared.glDeleteLists(5);
    EXPECT_EQ(1, log.count("Display list 5 is not known!", 1000));
    EXPECT_EQ("qel::gui::SharedContext::glDeleteLists", log.records().back().function);
    EXPECT_TRUE(freeForOtherThreads(shared)) << "the guard unlocked after the message";
}

TEST(SharedContext, FoundedByAContextItSharesListsAndBooksThem)
{
    OffscreenTarget target;
    ASSERT_TRUE(target.isValid());
    SharedContext shared;
    shared.lock();
    shared.setContext(target.glContext());
    shared.unlock();
    ASSERT_TRUE(shared.hasContext());
    EXPECT_TRUE(shared.glContext()->shareGroup() == target.glContext()->shareGroup());
    EXPECT_TRUE(shared.hasFBO());
    EXPECT_TRUE(shared.makeCurrent());

    // A list made through the shared context is drawn by the other member of the group.
    const unsigned int first = shared.glGenLists(3);
    ASSERT_NE(0u, first);
    EXPECT_EQ(3, shared.bookedRange(first));
    EXPECT_EQ(shared.glContext(), QOpenGLContext::currentContext()) << "the context stays current";
    glNewList(first, GL_COMPILE);
    glColor3f(0.0f, 0.0f, 1.0f);
    glRectf(-0.5f, -0.5f, 0.5f, 0.5f);
    glEndList();
    shared.doneCurrent();
    target.makeCurrent();
    target.clear();
    glCallList(first);
    EXPECT_TRUE(sameColor(QColor(0, 0, 255), target.pixel(32, 32)));
    EXPECT_TRUE(sameColor(QColor(0, 0, 0), target.pixel(2, 2)));

    // Only first names are keys.
    LogCapture log;
    shared.glDeleteLists(first + 1);
    EXPECT_EQ(1, log.count("is not known!", 1000));
    EXPECT_EQ(3, shared.bookedRange(first));

    shared.glDeleteLists(first);
    EXPECT_EQ(0, shared.bookedRange(first));
    EXPECT_FALSE(glIsList(first));
    shared.glDeleteLists(first);
    EXPECT_EQ(2, log.count("is not known!", 1000)) << "a second delete finds nothing";
    target.makeCurrent();
}

TEST(SharedContext, DestructorDeletesTheListsStillBooked)
{
    OffscreenTarget target;
    ASSERT_TRUE(target.isValid());
    unsigned int first = 0;
    {
        SharedContext shared;
        shared.lock();
        shared.setContext(target.glContext());
        shared.unlock();
        first = shared.glGenLists(2);
        glNewList(first, GL_COMPILE);
        glEndList();
        glNewList(first + 1, GL_COMPILE);
        glEndList();
    }
    target.makeCurrent();
    EXPECT_FALSE(glIsList(first));
    EXPECT_FALSE(glIsList(first + 1));
}

TEST(SharedContext, LockHelpersUnlockAtScopeEndWhileTheirObjectLives)
{
    SharedContext shared;
    {
        SharedContext::LockHelper guard(&shared, true, false);
        EXPECT_EQ(&shared, guard.getContext());
        EXPECT_FALSE(freeForOtherThreads(shared));
        // Nested guards work on the recursive mutex.
        SharedContext::LockHelper inner(&shared, true, true);
        EXPECT_FALSE(freeForOtherThreads(shared));
    }
    EXPECT_TRUE(freeForOtherThreads(shared));

    // Without locking, the guard still unlocks what its caller locked.
    shared.lock();
    {
        SharedContext::LockHelper adopted(&shared, false, false);
        SharedContext::LockHelper copy(adopted);
        copy = adopted;
        shared.lock();
    }
    EXPECT_TRUE(freeForOtherThreads(shared));

    // A guard that outlives its object does nothing at its end.
    SharedContext* shortLived = new SharedContext;
    SharedContext::LockHelper orphan(shortLived, false, false);
    delete shortLived;
    EXPECT_EQ(nullptr, orphan.getContext());
}

TEST(LockableGLWidget, FirstWidgetFoundsTheContextAndCallbacksRunLocked)
{
    SharedContext shared;
    RecordingWidget first(&shared);
    first.show();
    const QImage image = first.grabFramebuffer();
    ASSERT_FALSE(image.isNull());
    EXPECT_TRUE(sameColor(QColor(0, 255, 0), image.pixelColor(5, 5)));
    EXPECT_EQ(1, first.initCount);
    EXPECT_GE(first.paintCount, 1);
    EXPECT_GE(first.resizeCount, 1);
    EXPECT_TRUE(first.alwaysLocked);
    ASSERT_TRUE(shared.hasContext());
    QOpenGLContext* founded = shared.glContext();
    EXPECT_TRUE(founded->shareGroup() == first.context()->shareGroup());

    // Later widgets join; the private context stays.
    RecordingWidget second(&shared);
    second.show();
    second.grabFramebuffer();
    EXPECT_EQ(1, second.initCount);
    EXPECT_EQ(founded, shared.glContext());
    EXPECT_TRUE(second.context()->shareGroup() == founded->shareGroup());
    EXPECT_TRUE(second.alwaysLocked);

    // The widget forwards the list book to its shared context.
    shared.makeCurrent();
    const unsigned int list = second.glGenLists(1);
    EXPECT_EQ(1, shared.bookedRange(list));
    second.glDeleteLists(list);
    EXPECT_EQ(0, shared.bookedRange(list));
    {
        LockableGLWidget::LockHelper guard(&second, true, false);
        EXPECT_EQ(&second, guard.getWidget());
        EXPECT_FALSE(freeForOtherThreads(shared));
    }
    EXPECT_TRUE(freeForOtherThreads(shared));
}
