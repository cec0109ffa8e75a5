#include "kernel/events/eventhandler.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/hostcommands.h"
#include "kernel/main/memento.h"
#include "kernel/main/undoredomanager.h"
#include "support/logcapture.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

using qel::main::Command;
using qel::main::Memento;
using qel::main::UndoRedoManager;

namespace {

// A value with a record of what the mementos did to it, in order.
struct Document
{
    int value = 0;
    QStringList calls;
    int liveMementos = 0;
};

class ValueMemento : public Memento
{
public:
    ValueMemento(Document* document, bool failing = false)
        : document(document), saved(document->value), failing(failing)
    {
        ++document->liveMementos;
    }
    ~ValueMemento() override { --document->liveMementos; }

    void restore() override
    {
        document->calls << QString("restore %1").arg(saved);
        if (failing)
            throw std::runtime_error("element is gone");
        document->value = saved;
    }

    Memento* createOpposite() override
    {
        document->calls << QString("opposite of %1 at %2").arg(saved).arg(document->value);
        return new ValueMemento(document);
    }

private:
    Document* document;
    int saved;
    bool failing;
};

// Records the availability events of the history.
class AvailabilityListener
{
public:
    AvailabilityListener()
    {
        for (const char* name : {"UNDO_AVAILABLE", "UNDO_NOT_AVAILABLE", "REDO_AVAILABLE", "REDO_NOT_AVAILABLE"}) {
            const unsigned long id = qel::events::EventHandler::getInstance()->addEvent("Global", name);
            const QString text = name;
            qel::main::EventManager::getInstance()->registerEventFunction(
                id, new qel::main::EventManager::EventFunction([this, text](const qel::main::Event*) { events << text; }),
                this);
        }
    }
    ~AvailabilityListener() { qel::main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this); }

    QStringList events;
};

class UndoTest : public ::testing::Test
{
protected:
    void SetUp() override { history->clear(); }
    void TearDown() override { history->clear(); }

    // Changes the value the way an element does: memento of the old state first.
    void change(int to)
    {
        history->addMemento(new ValueMemento(&document));
        document.value = to;
    }

    UndoRedoManager* history = UndoRedoManager::getInstance();
    Document document;
};

} // namespace

TEST_F(UndoTest, OppositeIsCapturedBeforeRestoring)
{
    change(1);
    change(2);
    ASSERT_TRUE(history->undo());
    EXPECT_EQ(1, document.value);
    EXPECT_EQ((QStringList{"opposite of 1 at 2", "restore 1"}), document.calls);

    document.calls.clear();
    ASSERT_TRUE(history->redo());
    EXPECT_EQ(2, document.value);
    EXPECT_EQ((QStringList{"opposite of 2 at 1", "restore 2"}), document.calls);

    ASSERT_TRUE(history->undo());
    ASSERT_TRUE(history->undo());
    EXPECT_EQ(0, document.value);
    EXPECT_FALSE(history->undo());
    ASSERT_TRUE(history->redo());
    ASSERT_TRUE(history->redo());
    EXPECT_EQ(2, document.value);
    EXPECT_FALSE(history->redo());
    EXPECT_EQ(2u, history->undoCount());
}

TEST_F(UndoTest, NewStepDropsRedoAndClearDeletesAll)
{
    change(1);
    change(2);
    ASSERT_TRUE(history->undo());
    EXPECT_EQ(1u, history->redoCount());
    change(5);
    EXPECT_FALSE(history->canRedo());
    EXPECT_EQ(2, document.liveMementos);
    history->clear();
    EXPECT_EQ(0, document.liveMementos);
    EXPECT_FALSE(history->canUndo());
}

TEST_F(UndoTest, AvailabilityIsAnnouncedOnlyWhenItChanges)
{
    AvailabilityListener listener;
    change(1);
    change(2);
    history->undo();
    history->undo();
    history->redo();
    history->clear();
    EXPECT_EQ((QStringList{"UNDO_AVAILABLE", "REDO_AVAILABLE", "UNDO_NOT_AVAILABLE", "UNDO_AVAILABLE",
                           "UNDO_NOT_AVAILABLE", "REDO_NOT_AVAILABLE"}),
              listener.events);
}

TEST_F(UndoTest, FailingRestoreIsLoggedAndDropped)
{
    history->addMemento(new ValueMemento(&document, true));
    qel::test::LogCapture log;
    EXPECT_FALSE(history->undo());
    EXPECT_TRUE(log.contains("element is gone", 1000));
    EXPECT_FALSE(history->canUndo());
    EXPECT_FALSE(history->canRedo());
    EXPECT_EQ(0, document.liveMementos);
}

TEST_F(UndoTest, StepsFromManyThreadsAreAllKept)
{
    std::vector<std::thread> threads;
    std::vector<Document> documents(4);
    for (Document& d : documents)
        threads.emplace_back([this, &d] {
            for (int i = 0; i < 50; ++i)
                history->addMemento(new ValueMemento(&d));
        });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(200u, history->undoCount());
    history->clear();
    for (const Document& d : documents)
        EXPECT_EQ(0, d.liveMementos);
}

TEST_F(UndoTest, UndoAndRedoCommandsFollowTheHistory)
{
    qel::main::CommandProcessor processor;
    QStringList messages;
    processor.setMessageSink([&messages](const QString& message) { messages << message; });
    qel::main::registerHostCommands(&processor);

    Command* undo = processor.getCommand("undo");
    ASSERT_NE(nullptr, undo);
    ASSERT_EQ(1u, undo->getGUIDescriptors().size());
    qel::main::CommandGUIDescriptor* menuEntry = undo->getGUIDescriptors().front();
    EXPECT_EQ(qel::main::CommandGUIDescriptor::MAINMENU, menuEntry->getFlag());
    EXPECT_EQ("Edit", menuEntry->getLocation());
    EXPECT_EQ(QKeySequence("Ctrl+Z"), menuEntry->getShortcut());
    EXPECT_EQ(QKeySequence("Ctrl+Y"), processor.getCommand("redo")->getGUIDescriptors().front()->getShortcut());
    EXPECT_FALSE(menuEntry->isQActionEnabled());

    EXPECT_TRUE(processor.executeCommand("undo", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ((QStringList{"Nothing to undo"}), messages);

    change(3);
    EXPECT_TRUE(menuEntry->isQActionEnabled());
    EXPECT_TRUE(processor.executeCommand("undo()", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ(0, document.value);
    EXPECT_FALSE(menuEntry->isQActionEnabled());
    EXPECT_TRUE(processor.getCommand("redo")->getGUIDescriptors().front()->isQActionEnabled());
    EXPECT_TRUE(processor.executeCommand("redo", Command::EXECUTE_SYNCHRONOUS, true));
    EXPECT_EQ(3, document.value);
    EXPECT_EQ(1, messages.size());
}
