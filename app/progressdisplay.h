#pragma once

#include <QObject>
#include <QPointer>
#include <atomic>

class QLabel;
class QMainWindow;
class QProgressBar;
class QToolButton;

namespace qel {
namespace main {
class Command;
}
}

// Shows the progress that commands report (a long load) in the main window's status bar,
// and writes it to the log at the information level in every case. Its abort button aborts
// the command that reports next.
class ProgressDisplay : public QObject
{
    Q_OBJECT
public:
    // Without a window only the log gets the progress.
    explicit ProgressDisplay(QMainWindow* window = nullptr);
    ~ProgressDisplay() override;

protected:
    // While a command on the application thread lets events through, user input reaches
    // the abort button only.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void report(qel::main::Command* command, int processed, const QString& text);
    void show(int processed, const QString& text);
    void letEventsThrough();
    void abortIfRequested(qel::main::Command* command);

    QPointer<QProgressBar> bar;
    QPointer<QLabel> label;
    QPointer<QToolButton> abortButton;
    std::atomic<bool> abortRequested{false};
};
