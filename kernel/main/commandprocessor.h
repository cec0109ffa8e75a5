#pragma once

#include "kernel/main/command.h"
#include "kernel/main/macrorecorder.h"

#include <QMutex>
#include <QString>
#include <boost/function.hpp>
#include <map>
#include <set>
#include <vector>

class QThread;

namespace qel {
namespace main {

// Registers the command prototypes, turns command strings into runs of clones, runs
// prepared commands and records macros. Every entry may be called from any thread.
class CommandProcessor
{
public:
    typedef boost::function<void(const QString&)> MessageSink;

    CommandProcessor();
    // Joins the background commands and deletes the prototypes.
    virtual ~CommandProcessor();

    // Takes over the prototype. A second command of the same name is refused (logged) and
    // stays the caller's.
    bool registerCommand(Command* prototype);
    // Deletes the prototype (for modules that are unloaded); false if unknown.
    bool unregisterCommand(const QString& name);
    // The prototype, matched without regard to case; null if unknown.
    Command* getCommand(const QString& name) const;
    // Sorted by name.
    std::vector<Command*> getCommands() const;

    // Parses `name(a,b,...)`, picks the parameter set, fills a clone and runs it, also when
    // the command is disabled (that greys its GUI entries only). On any fault a one-line
    // message goes to the sink and the log, nothing runs and it returns false.
    // `record`: whether the string goes into a recorded macro.
    bool executeCommand(const QString& commandString, Command::CommandExecution mode, bool record);
    // Runs a prepared command and deletes it afterwards (a background one when its thread
    // ends). `record` adds its toCommandString() to a recorded macro. False when execute
    // threw or an argument isn't a finite number (reported, not run); a background run
    // answers true once started.
    bool processCommand(Command* command, Command::CommandExecution mode, bool record);

    bool isRecording() const;
    MacroRecorder* getMacroRecorder() { return &macroRecorder; }
    // Runs a macro file line by line, each finished before the next; blank lines and lines
    // starting with '#' are skipped. Stops with false at the first line that fails.
    bool runMacro(const QString& file);

    // Receives the user-facing messages (on the thread that reports them).
    void setMessageSink(const MessageSink& sink);
    // A message to the sink and to the log at the given level.
    void reportMessage(const QString& message, unsigned int level = 1000) const;

    // Joins every background command started so far.
    void waitForAll();

    CommandProcessor(const CommandProcessor&) = delete;
    CommandProcessor& operator=(const CommandProcessor&) = delete;

private:
    Command* prepareCommand(const QString& commandString, QString* error) const;
    QString describeMismatch(const Command* prototype, const std::vector<QString>& arguments) const;
    bool refuseNonFiniteArgument(Command* command);
    bool runOnApplicationThread(Command* command);
    bool runGuarded(Command* command);
    bool startInBackground(Command* command);
    void reapFinishedThreads();
    bool executeMacroLines(const QString& file, const QStringList& lines);

    mutable QMutex mutex;
    std::map<QString, Command*> prototypes;
    MessageSink messageSink;
    MacroRecorder macroRecorder;

    QMutex threadMutex;
    std::vector<QThread*> threads;

    QMutex macroMutex;
    std::set<QString> runningMacros;
};

} // namespace main
} // namespace qel
