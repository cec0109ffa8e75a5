#pragma once

#include <QLineEdit>
#include <QStringList>

// The host's command line: a command string per Return, with Up/Down history.
class CommandLineWidget : public QLineEdit
{
    Q_OBJECT
public:
    explicit CommandLineWidget(QWidget* parent = nullptr);

Q_SIGNALS:
    void commandEntered(const QString& command);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void submit();
    void showHistoryEntry(int step);

    QStringList history;
    int historyIndex = 0;
};
