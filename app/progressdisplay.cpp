#include "progressdisplay.h"

#include "kernel/log/logger.h"
#include "kernel/main/command.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QStatusBar>
#include <QThread>
#include <QToolButton>

ProgressDisplay::ProgressDisplay(QMainWindow* window)
{
    if (window) {
        label = new QLabel;
        bar = new QProgressBar;
        bar->setRange(0, 100);
        bar->setMaximumWidth(240);
        abortButton = new QToolButton;
        abortButton->setText(tr("Abort"));
        abortButton->setToolTip(tr("Abort the running command"));
        QObject::connect(abortButton, &QToolButton::clicked, this, [this] { abortRequested = true; });
        window->statusBar()->addPermanentWidget(label);
        window->statusBar()->addPermanentWidget(bar);
        window->statusBar()->addPermanentWidget(abortButton);
        label->hide();
        bar->hide();
        abortButton->hide();
    }
    qel::main::Command::setProgressSink(
        [this](qel::main::Command* command, int processed, const QString& text) {
            report(command, processed, text);
        });
}

ProgressDisplay::~ProgressDisplay()
{
    qel::main::Command::setProgressSink(qel::main::Command::ProgressSink());
}

void ProgressDisplay::report(qel::main::Command* command, int processed, const QString& text)
{
    qel::log::Logger::log(3000, "app/progressdisplay", 40, "ProgressDisplay::report", nullptr,
                          QStringLiteral("%1: %2 (%3%)").arg(command ? command->getName() : QString(), text).arg(processed));
    abortIfRequested(command);
    if (!bar)
        return;
    if (QThread::currentThread() == thread()) {
        show(processed, text);
        letEventsThrough();
        abortIfRequested(command);
    } else {
        QMetaObject::invokeMethod(this, [this, processed, text]() { show(processed, text); }, Qt::QueuedConnection);
    }
}

void ProgressDisplay::show(int processed, const QString& text)
{
    const bool running = processed >= 0 && processed < 100;
    bar->setValue(qBound(0, processed, 100));
    label->setText(text);
    bar->setVisible(running);
    label->setVisible(running);
    abortButton->setVisible(running);
    if (!running)
        abortRequested = false;
}

// The command is alive while it reports: a click in between reaches it here.
void ProgressDisplay::abortIfRequested(qel::main::Command* command)
{
    if (command && abortRequested.exchange(false))
        command->abort();
}

// A command on the application thread holds the event loop: let the bar repaint and the
// abort button take its click, and keep every other input away from the busy window.
void ProgressDisplay::letEventsThrough()
{
    QCoreApplication* application = QCoreApplication::instance();
    application->installEventFilter(this);
    QCoreApplication::processEvents();
    application->removeEventFilter(this);
}

bool ProgressDisplay::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        // Widgets get their input from their window: only the button's own event passes.
        return watched->isWidgetType() && watched != abortButton.data();
    case QEvent::Wheel:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::ContextMenu:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}
