#pragma once

#include <QObject>
#include <QPointer>

class QLabel;
class QMainWindow;
class QProgressBar;

namespace qel {
namespace main {
class Command;
}
}

// Shows the progress that commands report (a long load) in the main window's status bar,
// and writes it to the log at the information level in every case.
class ProgressDisplay : public QObject
{
    Q_OBJECT
public:
    // Without a window only the log gets the progress.
    explicit ProgressDisplay(QMainWindow* window = nullptr);
    ~ProgressDisplay() override;

private:
    void report(const qel::main::Command* command, int processed, const QString& text);
    void show(int processed, const QString& text);

    QPointer<QProgressBar> bar;
    QPointer<QLabel> label;
};
