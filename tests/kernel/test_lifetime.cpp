#include "kernel/util/zmemorymanaged.h"
#include "kernel/util/zobservedclass.h"
#include "kernel/util/zobserver.h"
#include "kernel/util/zpointer.h"
#include "kernel/util/delegate.h"
#include "kernel/util/delegate0.h"
#include "support/logcapture.h"

#include <gtest/gtest.h>

using qel::util::ZMemoryManaged;
using qel::util::ZPointer;

namespace {

struct Counted : ZMemoryManaged<Counted>
{
    explicit Counted(int* deletions = nullptr) : deletions(deletions) {}
    ~Counted() override
    {
        if (deletions)
            ++*deletions;
    }
    int* deletions;
};

// Holds a pointer to the next object so that assigning the only keeper of an
// object to a pointer it owns exercises the release order.
struct Chain : ZMemoryManaged<Chain>
{
    ZPointer<Chain> next;
};

} // namespace

TEST(Lifetime, NullPointerTouchesNothing)
{
    ZPointer<Counted> empty(nullptr);
    EXPECT_TRUE(empty == nullptr);
    ZPointer<Counted> copy(empty);
    copy = empty;
    EXPECT_TRUE(copy.isNull());
}

TEST(Lifetime, CountsCopiesAndDeletesOnceAtZero)
{
    int deletions = 0;
    auto* object = new Counted(&deletions);
    EXPECT_EQ(0, object->getRefCount());
    {
        qel::test::LogCapture log;
        ZPointer<Counted> first(object);
        {
            ZPointer<Counted> second(first);
            ZPointer<Counted> third;
            third = second;
            EXPECT_EQ(3, object->getRefCount());
        }
        EXPECT_EQ(1, object->getRefCount());
        first = first; // self-assignment keeps the only owner alive
        EXPECT_EQ(1, object->getRefCount());
        EXPECT_EQ(0, deletions);
        first = nullptr;
        EXPECT_EQ(1, deletions);
        EXPECT_FALSE(log.contains("still referenced"));
    }
    EXPECT_EQ(1, deletions);
}

TEST(Lifetime, AssigningAPointerOnlyTheOldPointeeKeepsAlive)
{
    ZPointer<Chain> head(new Chain);
    head->next = new Chain;
    Chain* second = head->next;
    head = head->next; // the old head dies, taking its reference to `second` with it
    EXPECT_EQ(second, head.get());
    EXPECT_EQ(1, second->getRefCount());
}

TEST(Lifetime, CopyTakesTheCountAlong)
{
    int deletions = 0;
    auto* original = new Counted(&deletions);
    for (int i = 0; i < 3; ++i)
        original->ref();
    auto* copy = new Counted(*original);
    EXPECT_EQ(3, copy->getRefCount());
    auto* assigned = new Counted(&deletions);
    *assigned = *original;
    EXPECT_EQ(3, assigned->getRefCount());
    for (Counted* object : {original, copy, assigned})
        for (int i = 0; i < 3; ++i)
            object->unref();
    EXPECT_EQ(3, deletions);
}

TEST(Lifetime, DeletingAReferencedObjectLogsAndGoesOn)
{
    qel::test::LogCapture log;
    auto* object = new Counted;
    object->ref();
    object->ref();
    delete object;
    ASSERT_EQ(1, log.count("is still referenced (2) by a smart-pointer", 1000));
    const auto record = log.records().front();
    EXPECT_EQ("kernel/util/zmemorymanaged", record.file);
    EXPECT_EQ(20, record.line);
    EXPECT_TRUE(record.function.startsWith("qel::util::ZMemoryManaged<class "));
}

namespace {

struct Target
{
    void take(int value) { received = value; }
    void takeAddress(int* address) { receivedAddress = address; }
    void poke() { ++pokes; }
    int received = 0;
    int* receivedAddress = nullptr;
    int pokes = 0;
};

struct Recorder : qel::util::ZObserver
{
    void update(void* data, void*) override { payloads.push_back(reinterpret_cast<intptr_t>(data)); }
    std::vector<intptr_t> payloads;
};

} // namespace

TEST(Lifetime, DelegateCallsWithTheCapturedArgument)
{
    Target target;
    int value = 1;
    qel::util::Delegate<Target, int> byValue(&target, &Target::take, value);
    value = 5;
    byValue.invoke();
    EXPECT_EQ(1, target.received);

    // A pointer argument is captured as the pointer: reseating the caller's variable later
    // doesn't redirect the call.
    int first = 1;
    int second = 2;
    int* current = &first;
    qel::util::Delegate<Target, int*> byAddress(&target, &Target::takeAddress, current);
    current = &second;
    byAddress.invoke();
    EXPECT_EQ(&first, target.receivedAddress);

    qel::util::Delegate0<Target> poke(&target, &Target::poke);
    poke.invoke();
    poke.invoke();
    EXPECT_EQ(2, target.pokes);
}

TEST(Lifetime, ObserversReceiveThePayload)
{
    ZPointer<qel::util::ZObservedClass> subject(new qel::util::ZObservedClass);
    Recorder recorder;
    subject->attachObserver(&recorder);
    EXPECT_TRUE(subject->isAttached(&recorder));
    subject->informObservers(reinterpret_cast<void*>(2));
    subject->detachObserver(&recorder);
    subject->informObservers(reinterpret_cast<void*>(1));
    EXPECT_EQ(std::vector<intptr_t>{2}, recorder.payloads);
}
