#include "kernel/main/commandguidescriptor.h"

#include <QAction>
#include <QCoreApplication>
#include <QMetaObject>
#include <QMutexLocker>
#include <QThread>

namespace qel {
namespace main {

namespace {

bool onApplicationThread()
{
    const QCoreApplication* application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

} // namespace

CommandGUIDescriptor::CommandGUIDescriptor(GUIFLAG flag, const QString& location, int position,
                                           const QString& nameOnGUI, const QString& toolTip, QIcon* icon)
    : flag(flag), location(location), position(position), nameOnGUI(nameOnGUI), toolTip(toolTip), icon(icon),
      actionEnabled(true), command(nullptr)
{
}

CommandGUIDescriptor::~CommandGUIDescriptor()
{
    if (action) {
        if (QThread::currentThread() == action->thread())
            delete action.data();
        else
            action->deleteLater();
    }
    delete icon;
}

void CommandGUIDescriptor::setShortcut(const QKeySequence& newShortcut)
{
    {
        QMutexLocker locker(&mutex);
        shortcut = newShortcut;
    }
    applyToAction([newShortcut](QAction* a) { a->setShortcut(newShortcut); });
}

QKeySequence CommandGUIDescriptor::getShortcut() const
{
    QMutexLocker locker(&mutex);
    return shortcut;
}

void CommandGUIDescriptor::useOnly(const std::vector<ParameterSet>& sets)
{
    QMutexLocker locker(&mutex);
    usedSets = sets;
}

std::vector<ParameterSet> CommandGUIDescriptor::getUsedSets() const
{
    QMutexLocker locker(&mutex);
    return usedSets;
}

void CommandGUIDescriptor::setGUIOpenFunction(const GUIOpenFunction& function)
{
    QMutexLocker locker(&mutex);
    openFunction = function;
}

CommandGUIDescriptor::GUIOpenFunction CommandGUIDescriptor::getGUIOpenFunction() const
{
    QMutexLocker locker(&mutex);
    return openFunction;
}

QAction* CommandGUIDescriptor::getQAction()
{
    {
        QMutexLocker locker(&mutex);
        if (action)
            return action.data();
    }
    if (onApplicationThread())
        return createQAction();
    QAction* created = nullptr;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [this, &created] { created = createQAction(); }, Qt::BlockingQueuedConnection);
    return created;
}

// Runs on the application thread only, so the action lives there.
QAction* CommandGUIDescriptor::createQAction()
{
    QMutexLocker locker(&mutex);
    if (!action) {
        action = icon ? new QAction(*icon, nameOnGUI) : new QAction(nameOnGUI);
        action->setToolTip(toolTip);
        action->setShortcut(shortcut);
        action->setEnabled(actionEnabled);
    }
    return action.data();
}

void CommandGUIDescriptor::enableQAction(bool enable)
{
    {
        QMutexLocker locker(&mutex);
        actionEnabled = enable;
    }
    applyToAction([enable](QAction* a) { a->setEnabled(enable); });
}

bool CommandGUIDescriptor::isQActionEnabled() const
{
    QMutexLocker locker(&mutex);
    return actionEnabled;
}

void CommandGUIDescriptor::setCommand(Command* newCommand)
{
    QMutexLocker locker(&mutex);
    command = newCommand;
}

Command* CommandGUIDescriptor::getCommand() const
{
    QMutexLocker locker(&mutex);
    return command;
}

// An action not made yet picks the stored state up when it is created.
void CommandGUIDescriptor::applyToAction(const boost::function<void(QAction*)>& change)
{
    QPointer<QAction> target;
    {
        QMutexLocker locker(&mutex);
        target = action;
    }
    if (!target)
        return;
    if (QThread::currentThread() == target->thread())
        change(target.data());
    else
        QMetaObject::invokeMethod(target.data(), [target, change] {
            if (target)
                change(target.data());
        }, Qt::QueuedConnection);
}

} // namespace main
} // namespace qel
