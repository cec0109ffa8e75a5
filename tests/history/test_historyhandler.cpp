#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"
#include "module_history/historyevents.h"
#include "module_history/historyhandler.h"
#include "module_history/savepoint.h"
#include "module_history/savepointeventdata.h"
#include "support/logcapture.h"

#include <gtest/gtest.h>

using qel::history::HistoryHandler;
using qel::history::Savepoint;
using qel::history::SavepointEventData;
using qel::main::Event;
using qel::main::EventManager;

namespace {

// What one "History" event carried, copied while the event lived.
struct Seen
{
    unsigned long id;
    Savepoint* savepoint;
    QSet<QString> keys;
    bool keysGiven;
    QByteArray positions;
};

class HistoryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (unsigned long id : {qel::history::SAVEPOINT_NEW, qel::history::SAVEPOINT_REMOVE,
                                 qel::history::SAVEPOINT_RESTORE})
            EventManager::getInstance()->registerEventFunction(
                id, new EventManager::EventFunction([this](const Event* event) { record(event); }), this);
    }

    void TearDown() override
    {
        EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
        HistoryHandler::getInstance()->clearSavepoints();
        for (const QString& key : HistoryHandler::getInstance()->getTypes())
            HistoryHandler::getInstance()->unregisterType(key);
    }

    void record(const Event* event)
    {
        auto* data = static_cast<SavepointEventData*>(event->getData());
        seen.push_back(Seen{event->getID(), data->savepoint, data->keys ? *data->keys : QSet<QString>(),
                            data->keys != nullptr, data->savepoint->getData("positions")});
        EXPECT_EQ(HistoryHandler::getInstance(), event->getSource());
    }

    static HistoryHandler::SaveFunction* writer(const QString& key, const QByteArray& document)
    {
        return new HistoryHandler::SaveFunction([key, document](Savepoint* point) { point->addData(key, document); });
    }

    std::vector<Seen> seen;
};

} // namespace

TEST_F(HistoryTest, HistoryEventsAreDeclaredAndTheGroupIsActive)
{
    auto* events = qel::events::EventHandler::getInstance();
    HistoryHandler::getInstance();
    EXPECT_TRUE(events->isEventTypeRegistered("History"));
    EXPECT_EQ(qel::history::SAVEPOINT_NEW, events->getEventID("History", "SAVEPOINT_NEW"));
    EXPECT_EQ(qel::history::SAVEPOINT_REMOVE, events->getEventID("History", "SAVEPOINT_REMOVE"));
    EXPECT_EQ(qel::history::SAVEPOINT_RESTORE, events->getEventID("History", "SAVEPOINT_RESTORE"));
}

TEST_F(HistoryTest, TypesAreRegisteredOnceAndDescribeThemselves)
{
    auto* history = HistoryHandler::getInstance();
    qel::test::LogCapture log;
    EXPECT_TRUE(history->registerType("positions", writer("positions", "<first/>"), "Positions", QIcon()));
    EXPECT_FALSE(history->registerType("positions", writer("positions", "<second/>"), "Other", QIcon()));
    EXPECT_EQ(1, log.count("'positions' is already registered as a history type", 0));
    EXPECT_EQ("Positions", history->getDisplayName("positions"));

    // The first registration stays in force.
    Savepoint* point = history->addSavepoint("one");
    EXPECT_EQ(QByteArray("<first/>"), point->getData("positions"));

    EXPECT_TRUE(history->unregisterType("positions"));
    EXPECT_FALSE(history->unregisterType("positions"));
    EXPECT_FALSE(history->isTypeRegistered("positions"));
    EXPECT_TRUE(history->getDisplayName("positions").isEmpty());
}

TEST_F(HistoryTest, NewSavepointHoldsTheDocumentOfEachTypeAndIsAnnounced)
{
    auto* history = HistoryHandler::getInstance();
    history->registerType("positions", writer("positions", "<matricies/>"), "Positions", QIcon());
    history->registerType("selection", writer("selection", "<selections/>"), "Selection", QIcon());

    const QDateTime before = QDateTime::currentDateTime();
    Savepoint* point = history->addSavepoint("Before alignment");
    ASSERT_NE(nullptr, point);
    EXPECT_EQ("Before alignment", point->getName());
    EXPECT_GE(point->getTime(), before);
    EXPECT_EQ(QByteArray("<selections/>"), point->getData("selection"));
    EXPECT_TRUE(point->getData("unknown").isEmpty());
    EXPECT_FALSE(point->hasData("unknown"));

    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(qel::history::SAVEPOINT_NEW, seen[0].id);
    EXPECT_EQ(point, seen[0].savepoint);
    EXPECT_EQ((QSet<QString>{"positions", "selection"}), seen[0].keys);
    EXPECT_EQ(std::vector<Savepoint*>{point}, history->getSavepoints());
}

TEST_F(HistoryTest, RestoreAnnouncesTheChosenKeysOfAKnownSavepointOnly)
{
    auto* history = HistoryHandler::getInstance();
    history->registerType("positions", writer("positions", "<matricies/>"), "Positions", QIcon());
    Savepoint* point = history->addSavepoint("p");
    seen.clear();

    EXPECT_TRUE(history->restoreSavepoint(point));
    EXPECT_TRUE(history->restoreSavepoint(point, QSet<QString>{"selection"}));
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(qel::history::SAVEPOINT_RESTORE, seen[0].id);
    EXPECT_EQ(QSet<QString>{"positions"}, seen[0].keys);
    EXPECT_EQ(QByteArray("<matricies/>"), seen[0].positions);
    EXPECT_EQ(QSet<QString>{"selection"}, seen[1].keys);

    qel::test::LogCapture log;
    Savepoint stranger("stranger");
    EXPECT_FALSE(history->restoreSavepoint(&stranger));
    EXPECT_EQ(1, log.count("is not known and can't be restored", 2000));
    EXPECT_EQ(2u, seen.size());
}

TEST_F(HistoryTest, RemovalAnnouncesWhileTheSavepointLivesAndForgetsIt)
{
    auto* history = HistoryHandler::getInstance();
    history->registerType("positions", writer("positions", "<m/>"), "Positions", QIcon());
    Savepoint* first = history->addSavepoint("first");
    Savepoint* second = history->addSavepoint("second");
    Savepoint* third = history->addSavepoint("third");
    seen.clear();

    EXPECT_TRUE(history->removeSavepoint(second));
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(qel::history::SAVEPOINT_REMOVE, seen[0].id);
    EXPECT_EQ(QByteArray("<m/>"), seen[0].positions); // read inside the event: still alive
    EXPECT_EQ((std::vector<Savepoint*>{first, third}), history->getSavepoints());

    qel::test::LogCapture log;
    EXPECT_FALSE(history->removeSavepoint(second));
    EXPECT_EQ(1, log.count("is not known and can't be removed", 2000));

    seen.clear();
    history->clearSavepoints();
    EXPECT_EQ(2u, seen.size());
    EXPECT_TRUE(history->getSavepoints().empty());
    EXPECT_FALSE(history->hasSavepoint(first));
}

TEST_F(HistoryTest, ListenerMayClearTheHistoryWhileASavepointIsAnnounced)
{
    auto* history = HistoryHandler::getInstance();
    EventManager::getInstance()->registerEventFunction(
        qel::history::SAVEPOINT_NEW,
        new EventManager::EventFunction([](const Event*) { HistoryHandler::getInstance()->clearSavepoints(); }),
        &seen);
    history->addSavepoint("short-lived");
    EventManager::getInstance()->unregisterAllEventFunctionsOf(&seen);
    EXPECT_TRUE(history->getSavepoints().empty());
}
