#include "progressdisplay.h"

#include "kernel/log/logger.h"
#include "kernel/main/command.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QStatusBar>
#include <QThread>

ProgressDisplay::ProgressDisplay(QMainWindow* window)
{
    if (window) {
        label = new QLabel;
        bar = new QProgressBar;
        bar->setRange(0, 100);
        bar->setMaximumWidth(240);
        window->statusBar()->addPermanentWidget(label);
        window->statusBar()->addPermanentWidget(bar);
        label->hide();
        bar->hide();
    }
    qel::main::Command::setProgressSink(
        [this](const qel::main::Command* command, int processed, const QString& text) {
            report(command, processed, text);
        });
}

ProgressDisplay::~ProgressDisplay()
{
    qel::main::Command::setProgressSink(qel::main::Command::ProgressSink());
}

void ProgressDisplay::report(const qel::main::Command* command, int processed, const QString& text)
{
    qel::log::Logger::log(3000, "app/progressdisplay", 40, "ProgressDisplay::report", nullptr,
                          QStringLiteral("%1: %2 (%3%)").arg(command ? command->getName() : QString(), text).arg(processed));
    if (!bar)
        return;
    if (QThread::currentThread() == thread()) {
        show(processed, text);
        // A load on the application thread holds the event loop: let the bar repaint.
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
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
}
