#pragma once

#include "kernel/main/command.h"

#include <QKeySequence>
#include <QString>

namespace qel {
namespace main {

class CommandProcessor;

// Base of `undo` and `redo`: one step through the undo history, with an "Edit" menu
// entry that follows whether there is a step to take.
class HistoryStepCommand : public Command
{
public:
    struct Step
    {
        const char* name;
        QString description;
        int menuPosition;
        QString menuText;
        QString toolTip;
        QKeySequence shortcut;
        const char* availableEvent;   // "Global" event names of the undo history
        const char* unavailableEvent;
        QString nothingToDo;          // reported when there is no step
        QString failed;               // reported when the step throws or fails
    };

    HistoryStepCommand(CommandProcessor* processor, const Step& step);
    HistoryStepCommand(const HistoryStepCommand& other);
    ~HistoryStepCommand() override;

    void execute() override;

protected:
    virtual bool canStep() const = 0;
    virtual bool takeStep() = 0;
    // Called by the derived constructor, once canStep() can answer: the prototype keeps
    // its menu entry up to date, working copies only run.
    void followAvailability();

private:
    void availabilityChanged(bool available);

    CommandProcessor* processor;
    Step step;
};

} // namespace main
} // namespace qel
