#include "kernel/main/command.h"

#include "kernel/log/logger.h"
#include "kernel/util/zmemorymanaged.h"

#include <QMutexLocker>
#include <QStringList>
#include <QThread>

namespace qel {
namespace main {

// The GUI descriptors belong to the prototype and all its clones together.
struct Command::GUIDescriptorList
{
    QMutex mutex;
    std::vector<CommandGUIDescriptor*> descriptors;

    ~GUIDescriptorList()
    {
        for (CommandGUIDescriptor* descriptor : descriptors) {
            if (QThread::currentThread() == descriptor->thread())
                delete descriptor;
            else
                descriptor->deleteLater();
        }
    }
};

namespace {

struct ProgressSinkHolder
{
    QMutex mutex;
    Command::ProgressSink sink;
};

ProgressSinkHolder& progressSinkHolder()
{
    static ProgressSinkHolder holder;
    return holder;
}

Command::ProgressSink currentProgressSink()
{
    ProgressSinkHolder& holder = progressSinkHolder();
    QMutexLocker locker(&holder.mutex);
    return holder.sink;
}

} // namespace

Command::Command(CommandDescriptor* descriptor, CommandGUIDescriptor* guiDescriptor)
    : selectedID(-1), selectedParameterSet(nullptr), descriptor(descriptor),
      guiDescriptors(std::make_shared<GUIDescriptorList>()), disabled(false), done(false), aborted(false),
      processed(0), executionMode(EXECUTE_SYNCHRONOUS), recordable(true), cloneFunction(nullptr)
{
    addGUIDescriptor(guiDescriptor);
}

Command::Command(const Command& other)
    : selectedID(-1), selectedParameterSet(nullptr), disabled(false), done(false), aborted(false), processed(0),
      executionMode(EXECUTE_SYNCHRONOUS), recordable(true), cloneFunction(nullptr)
{
    copyFrom(other);
}

Command& Command::operator=(const Command& other)
{
    if (this != &other) {
        deleteParameterSets();
        copyFrom(other);
    }
    return *this;
}

Command::~Command()
{
    deleteParameterSets();
}

void Command::copyFrom(const Command& other)
{
    descriptor = other.descriptor;
    guiDescriptors = other.guiDescriptors;
    selectedID = other.selectedID;
    selectedParameterSet = nullptr;
    for (const ParameterSet* set : other.parameterSets) {
        parameterSets.push_back(new ParameterSet(*set));
        if (set == other.selectedParameterSet)
            selectedParameterSet = parameterSets.back();
    }
    disabled.store(other.disabled.load());
    done.store(other.done.load());
    aborted.store(false);
    processed.store(other.processed.load());
    executionMode = other.executionMode;
    recordable = other.recordable;
    cloneFunction = other.cloneFunction;
    const QString text = other.getProcessText();
    QMutexLocker locker(&processTextMutex);
    processText = text;
}

void Command::deleteParameterSets()
{
    for (ParameterSet* set : parameterSets)
        delete set;
    parameterSets.clear();
    selectedParameterSet = nullptr;
}

bool Command::setParameters(const std::vector<QString>& arguments)
{
    if (parameterSets.empty() && arguments.empty()) {
        setSelectedParameterSet(nullptr);
        setSelectedID(-1);
        return true;
    }
    ParameterSet* set = findParameterSet(arguments);
    if (!set)
        return false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (!set->getParameter(i)->castString(arguments[i]))
            return false;
    }
    setSelectedParameterSet(set);
    setSelectedID(set->getID());
    return true;
}

qel::gui::AbstractCommandGuiWidget* Command::getGUIWindow(std::vector<ParameterSet>*)
{
    return nullptr;
}

qel::gui::DefaultCommandWidget* Command::getCommandWidget()
{
    return nullptr;
}

Command* Command::clone() const
{
    if (cloneFunction)
        return cloneFunction(*this);
    qel::log::Logger::log(0, "kernel/main/command", __LINE__, "qel::main::Command::clone", nullptr,
                          QStringLiteral("Command '%1' (%2) can't be copied: its class neither overrides clone() "
                                         "nor calls enableCloning()")
                              .arg(getName(), QString::fromStdString(qel::util::demangledTypeName(typeid(*this)))));
    return nullptr;
}

void Command::reportSlicedClone(const Command& original, const std::type_info& cloneType)
{
    qel::log::Logger::log(0, "kernel/main/command", __LINE__, "qel::main::Command::clone", nullptr,
                          QStringLiteral("Command '%1' is a %2 but would be copied as a %3: the class must enable "
                                         "its own cloning")
                              .arg(original.getName(),
                                   QString::fromStdString(qel::util::demangledTypeName(typeid(original))),
                                   QString::fromStdString(qel::util::demangledTypeName(cloneType))));
}

void Command::abort()
{
    aborted.store(true);
}

QString Command::getName() const
{
    return descriptor ? descriptor->getName() : QString();
}

std::vector<CommandGUIDescriptor*> Command::getGUIDescriptors() const
{
    QMutexLocker locker(&guiDescriptors->mutex);
    return guiDescriptors->descriptors;
}

void Command::addGUIDescriptor(CommandGUIDescriptor* guiDescriptor)
{
    if (!guiDescriptor)
        return;
    if (!guiDescriptor->getCommand())
        guiDescriptor->setCommand(this);
    QMutexLocker locker(&guiDescriptors->mutex);
    guiDescriptors->descriptors.push_back(guiDescriptor);
}

void Command::addParameterSet(ParameterSet* set)
{
    if (set)
        parameterSets.push_back(set);
}

ParameterSet* Command::getParameterSetByID(int id) const
{
    for (ParameterSet* set : parameterSets) {
        if (set->getID() == id)
            return set;
    }
    return nullptr;
}

ParameterSet* Command::findParameterSet(const std::vector<QString>& arguments, QString* error) const
{
    ParameterSet* best = nullptr;
    for (ParameterSet* set : parameterSets) {
        if (!set->fits(arguments))
            continue;
        // Of several fitting sets the one with more typed parameters says more about these arguments.
        if (!best || set->typedParameterCount() > best->typedParameterCount())
            best = set;
    }
    if (!best && error && !(parameterSets.empty() && arguments.empty()))
        *error = QStringLiteral("No parameter set of '%1' fits %2 argument(s)").arg(getName()).arg(arguments.size());
    return best;
}

void Command::disableCommand(bool disable)
{
    disabled.store(disable);
    disableGUIDescriptors(getGUIDescriptors(), disable);
}

int Command::findNonFiniteArgument() const
{
    if (!selectedParameterSet)
        return -1;
    const std::deque<AbstractParameter*>& parameters = *selectedParameterSet->getParameterList();
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (!parameters[i]->holdsFiniteValue())
            return static_cast<int>(i);
    }
    return -1;
}

QString Command::toCommandString() const
{
    QStringList arguments;
    if (selectedParameterSet) {
        for (const AbstractParameter* parameter : *selectedParameterSet->getParameterList())
            arguments << parameter->toString();
    }
    return getName() + QLatin1Char('(') + arguments.join(QLatin1Char(',')) + QLatin1Char(')');
}

QString Command::getProcessText() const
{
    QMutexLocker locker(&processTextMutex);
    return processText;
}

void Command::setProgressSink(const ProgressSink& sink)
{
    ProgressSinkHolder& holder = progressSinkHolder();
    QMutexLocker locker(&holder.mutex);
    holder.sink = sink;
}

void Command::disableGUIDescriptors(const std::list<CommandGUIDescriptor*>& list, bool disable)
{
    for (CommandGUIDescriptor* guiDescriptor : list) {
        if (guiDescriptor)
            guiDescriptor->enableQAction(!disable);
    }
}

void Command::disableGUIDescriptors(const std::vector<CommandGUIDescriptor*>& list, bool disable)
{
    disableGUIDescriptors(std::list<CommandGUIDescriptor*>(list.begin(), list.end()), disable);
}

void Command::updateProcessed(int value)
{
    processed.store(value);
    const ProgressSink sink = currentProgressSink();
    if (sink)
        sink(this, value, getProcessText());
}

void Command::updateText(const QString& text)
{
    {
        QMutexLocker locker(&processTextMutex);
        processText = text;
    }
    const ProgressSink sink = currentProgressSink();
    if (sink)
        sink(this, processed.load(), text);
}

} // namespace main
} // namespace qel
