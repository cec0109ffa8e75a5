#pragma once

#include "kernel/main/commanddescriptor.h"
#include "kernel/main/commandguidescriptor.h"
#include "kernel/main/parameterset.h"
#include "kernel/main/typesolver.h"

#include <QMutex>
#include <QString>
#include <atomic>
#include <boost/function.hpp>
#include <list>
#include <memory>
#include <typeinfo>
#include <vector>

namespace qel {
namespace gui {
class AbstractCommandGuiWidget;
class DefaultCommandWidget;
} // namespace gui

namespace main {

// Something a user can do. A command exists once as a registered prototype; each run
// works on a clone(). Copies deep-copy the parameter sets and share the descriptor and
// the GUI descriptors with the prototype.
//
// Cloning: a concrete class either calls enableCloning<Itself>() in its constructor, which
// lets the base clone() make the copy (and lets intermediate bases extend clone() by
// calling Command::clone()), or overrides clone() with `return cloneAs<Itself>();`.
class Command
{
public:
    enum CommandExecution { EXECUTE_SYNCHRONOUS = 0, EXECUTE_APPLICATIONTHREAD = 1, EXECUTE_BACKGROUND = 2 };
    typedef boost::function<void(Command*, int processed, const QString& text)> ProgressSink;

    // Takes over the descriptor and the GUI descriptor (either may be null).
    Command(CommandDescriptor* descriptor, CommandGUIDescriptor* guiDescriptor = nullptr);
    Command(const Command& other);
    Command& operator=(const Command& other);
    virtual ~Command();

    // Picks the set that the arguments fit, fills it and selects it.
    virtual bool setParameters(const std::vector<QString>& arguments);
    virtual qel::gui::AbstractCommandGuiWidget* getGUIWindow(std::vector<ParameterSet>* sets);
    virtual qel::gui::DefaultCommandWidget* getCommandWidget();
    // A new working copy, or null (logged) when the class can't be copied.
    virtual Command* clone() const;
    virtual void abort();
    virtual void execute() = 0;

    QString getName() const;
    CommandDescriptor* getDescriptor() const { return descriptor.get(); }

    std::vector<CommandGUIDescriptor*> getGUIDescriptors() const;
    // Takes over the GUI descriptor, which then belongs to the prototype and its clones.
    void addGUIDescriptor(CommandGUIDescriptor* guiDescriptor);

    std::vector<ParameterSet*>* getParameterSets() { return &parameterSets; }
    const std::vector<ParameterSet*>* getParameterSets() const { return &parameterSets; }
    // Takes over the set.
    void addParameterSet(ParameterSet* set);
    // The first set with the id, or null.
    ParameterSet* getParameterSetByID(int id) const;
    // The set that the arguments fit by number and cast, or null with the reason in `error`.
    // A command without sets fits only an empty argument list (and gives null without error).
    ParameterSet* findParameterSet(const std::vector<QString>& arguments, QString* error = nullptr) const;

    void setSelectedParameterSet(ParameterSet* set) { selectedParameterSet = set; }
    ParameterSet* getSelectedParameterSet() const { return selectedParameterSet; }
    void setSelectedID(int id) { selectedID = id; }
    int getSelectedID() const { return selectedID; }

    void disableCommand(bool disable);
    bool isDisabled() const { return disabled.load(); }

    CommandExecution getExecutionMode() const { return executionMode; }
    void setExecutionMode(CommandExecution mode) { executionMode = mode; }

    bool isDone() const { return done.load(); }
    void setDone(bool isDone) { done.store(isDone); }
    bool isAborted() const { return aborted.load(); }

    // Whether runs of this command go into a recorded macro (not so for the macro commands).
    bool isRecordable() const { return recordable; }
    void setRecordable(bool record) { recordable = record; }

    // The index of the first argument of the selected set that holds an infinity or NaN,
    // or -1.
    int findNonFiniteArgument() const;

    // name(a,b,...) from the selected set's values.
    QString toCommandString() const;

    int getProcessed() const { return processed.load(); }
    QString getProcessText() const;
    // Where progress goes (the host's status display); called on the command's thread.
    static void setProgressSink(const ProgressSink& sink);

protected:
    void disableGUIDescriptors(const std::list<CommandGUIDescriptor*>& guiDescriptors, bool disable);
    void disableGUIDescriptors(const std::vector<CommandGUIDescriptor*>& guiDescriptors, bool disable);
    void updateProcessed(int value);
    void updateText(const QString& text);

    template <class Derived>
    void enableCloning()
    {
        cloneFunction = &copyAs<Derived>;
    }

    template <class Derived>
    Command* cloneAs() const
    {
        return copyAs<Derived>(*this);
    }

    int selectedID;
    ParameterSet* selectedParameterSet;
    TypeSolver typeSolver;

private:
    typedef Command* (*CloneFunction)(const Command&);
    struct GUIDescriptorList;

    template <class Derived>
    static Command* copyAs(const Command& original)
    {
        if (typeid(original) != typeid(Derived)) {
            reportSlicedClone(original, typeid(Derived));
            return nullptr;
        }
        return new Derived(static_cast<const Derived&>(original));
    }
    static void reportSlicedClone(const Command& original, const std::type_info& cloneType);

    void copyFrom(const Command& other);
    void deleteParameterSets();

    std::shared_ptr<CommandDescriptor> descriptor;
    std::shared_ptr<GUIDescriptorList> guiDescriptors;
    std::vector<ParameterSet*> parameterSets;
    std::atomic<bool> disabled;
    std::atomic<bool> done;
    std::atomic<bool> aborted;
    std::atomic<int> processed;
    CommandExecution executionMode;
    bool recordable;
    CloneFunction cloneFunction;
    mutable QMutex processTextMutex;
    QString processText;
};

} // namespace main
} // namespace qel
