#include "kernel/main/outputconsole.h"

#include <QFontDatabase>
#include <QMetaObject>
#include <QMutexLocker>
#include <QScrollBar>
#include <QThread>

namespace qel {
namespace main {

OutputConsole::OutputConsole(QWidget* parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setMaximumBlockCount(MaximumLines);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

void OutputConsole::appendText(const QString& text)
{
    {
        QMutexLocker locker(&mutex);
        lines.append(text);
        while (lines.size() > MaximumLines)
            lines.removeFirst();
    }
    if (QThread::currentThread() == thread())
        showText(text);
    else // the console as context: a call still queued when it goes is dropped
        QMetaObject::invokeMethod(this, [this, text]() { showText(text); }, Qt::QueuedConnection);
}

void OutputConsole::showText(const QString& text)
{
    appendPlainText(text);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

QString OutputConsole::getText() const
{
    QMutexLocker locker(&mutex);
    return lines.join(QLatin1Char('\n'));
}

void OutputConsole::clearText()
{
    {
        QMutexLocker locker(&mutex);
        lines.clear();
    }
    if (QThread::currentThread() == thread())
        clear();
    else
        QMetaObject::invokeMethod(this, [this]() { clear(); }, Qt::QueuedConnection);
}

} // namespace main
} // namespace qel
