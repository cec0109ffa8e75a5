#include "commandlinewidget.h"

#include <QKeyEvent>

CommandLineWidget::CommandLineWidget(QWidget* parent) : QLineEdit(parent)
{
    setPlaceholderText(tr("Command, e.g. viewscene or translate(model,1,2,3,1)"));
    setClearButtonEnabled(true);
    connect(this, &QLineEdit::returnPressed, this, &CommandLineWidget::submit);
}

void CommandLineWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Up) {
        showHistoryEntry(-1);
        return;
    }
    if (event->key() == Qt::Key_Down) {
        showHistoryEntry(+1);
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void CommandLineWidget::submit()
{
    const QString command = text().trimmed();
    if (command.isEmpty())
        return;
    if (history.isEmpty() || history.last() != command)
        history << command;
    historyIndex = history.size();
    clear();
    Q_EMIT commandEntered(command);
}

void CommandLineWidget::showHistoryEntry(int step)
{
    if (history.isEmpty())
        return;
    historyIndex = qBound(0, historyIndex + step, history.size());
    setText(historyIndex < history.size() ? history.at(historyIndex) : QString());
}
