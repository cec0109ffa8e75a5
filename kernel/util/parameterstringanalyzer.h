#pragma once

#include <QString>
#include <vector>

namespace qel {
namespace util {

// Splits command strings `name(a,b,...)` and argument lists. Lists `[...]` of any depth
// are one argument; arguments are taken as they stand (blanks included, no quoting).
class ParameterStringAnalyzer
{
public:
    // Appends the parts of `text` split at commas outside brackets and parentheses.
    // An empty text has no parts; empty parts between commas are kept.
    static void findParameters(std::vector<QString>& parts, const QString& text);

    // Parses a whole command string; a bare name is a call without arguments. On a
    // malformed string it returns false and, if `error` is given, says why.
    static bool splitCommand(const QString& text, QString& name, std::vector<QString>& arguments,
                             QString* error = nullptr);

private:
    static bool isValidName(const QString& name);
    static bool findClosingParenthesis(const QString& text, int open, int& close, QString& error);
};

} // namespace util
} // namespace qel
