#include "kernel/util/parameterstringanalyzer.h"

#include <QRegularExpression>
#include <algorithm>
#include <vector>

namespace qel {
namespace util {

namespace {

bool isOpening(QChar c)
{
    return c == QLatin1Char('(') || c == QLatin1Char('[');
}

bool isClosing(QChar c)
{
    return c == QLatin1Char(')') || c == QLatin1Char(']');
}

QChar openingOf(QChar closing)
{
    return closing == QLatin1Char(')') ? QLatin1Char('(') : QLatin1Char('[');
}

bool fail(QString* error, const QString& text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

void ParameterStringAnalyzer::findParameters(std::vector<QString>& parts, const QString& text)
{
    if (text.isEmpty())
        return;
    int depth = 0;
    int start = 0;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isOpening(c))
            ++depth;
        else if (isClosing(c) && depth > 0)
            --depth;
        else if (c == QLatin1Char(',') && depth == 0) {
            parts.push_back(text.mid(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.mid(start));
}

bool ParameterStringAnalyzer::splitCommand(const QString& text, QString& name, std::vector<QString>& arguments,
                                           QString* error)
{
    name.clear();
    arguments.clear();
    const QString command = text.trimmed();
    if (command.isEmpty())
        return fail(error, QStringLiteral("Empty command string"));

    const int open = command.indexOf(QLatin1Char('('));
    const QString candidate = open < 0 ? command : command.left(open).trimmed();
    if (candidate.isEmpty())
        return fail(error, QStringLiteral("Missing command name in '%1'").arg(command));
    if (!isValidName(candidate))
        return fail(error, QStringLiteral("Invalid command name '%1' in '%2'").arg(candidate, command));
    if (open < 0) {
        name = candidate;
        return true;
    }

    int close = -1;
    QString why;
    if (!findClosingParenthesis(command, open, close, why))
        return fail(error, QStringLiteral("%1 in '%2'").arg(why, command));
    if (close != command.size() - 1)
        return fail(error, QStringLiteral("Unexpected text '%1' after ')' in '%2'").arg(command.mid(close + 1), command));

    std::vector<QString> parts;
    findParameters(parts, command.mid(open + 1, close - open - 1));
    for (size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].trimmed().isEmpty())
            return fail(error, QStringLiteral("Empty argument %1 in '%2'").arg(i + 1).arg(command));
    }
    name = candidate;
    arguments = parts;
    return true;
}

bool ParameterStringAnalyzer::isValidName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return pattern.match(name).hasMatch();
}

// Brackets and parentheses must pair up properly inside the argument list.
bool ParameterStringAnalyzer::findClosingParenthesis(const QString& text, int open, int& close, QString& error)
{
    std::vector<QChar> pending;
    for (int i = open; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isOpening(c)) {
            pending.push_back(c);
        } else if (isClosing(c)) {
            if (pending.empty() || pending.back() != openingOf(c)) {
                error = QStringLiteral("Unbalanced '%1' at position %2").arg(c).arg(i + 1);
                return false;
            }
            pending.pop_back();
            if (pending.empty()) {
                close = i;
                return true;
            }
        }
    }
    const bool listOpen = std::find(pending.begin(), pending.end(), QLatin1Char('[')) != pending.end();
    error = listOpen ? QStringLiteral("Missing ']'") : QStringLiteral("Missing ')'");
    return false;
}

} // namespace util
} // namespace qel
