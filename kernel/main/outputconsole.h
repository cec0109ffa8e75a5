#pragma once

#include <QMutex>
#include <QPlainTextEdit>
#include <QString>
#include <QStringList>

namespace qel {
namespace main {

// The user-visible text console. appendText may be called from any thread: off the
// application thread the line is queued for it, but getText sees it at once.
class OutputConsole : public QPlainTextEdit
{
    Q_OBJECT

public:
    // Lines kept; older ones are dropped.
    static const int MaximumLines = 10000;

    explicit OutputConsole(QWidget* parent = nullptr);

    void appendText(const QString& text);
    QString getText() const;
    void clearText();

private:
    void showText(const QString& text);

    mutable QMutex mutex;
    QStringList lines;
};

} // namespace main
} // namespace qel
