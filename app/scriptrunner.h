#pragma once

#include <QString>
#include <QStringList>

namespace qel {
namespace main {
class CommandProcessor;
}
}

// Runs command strings one after the other, each finished before the next starts.
// Blank lines and lines starting with '#' are skipped.
class ScriptRunner
{
public:
    explicit ScriptRunner(qel::main::CommandProcessor* processor) : processor(processor) {}

    // Stops at the first line that can't be parsed or matched; returns false then.
    bool runFile(const QString& path);
    bool runLines(const QStringList& lines, const QString& origin);

    const QString& lastError() const { return error; }

private:
    qel::main::CommandProcessor* processor;
    QString error;
};
