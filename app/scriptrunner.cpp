#include "scriptrunner.h"

#include "kernel/main/commandprocessor.h"

#include <QFile>
#include <QTextStream>

bool ScriptRunner::runFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        error = QStringLiteral("Cannot read command file '%1': %2").arg(path, file.errorString());
        return false;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    QStringList lines;
    while (!stream.atEnd())
        lines << stream.readLine();
    return runLines(lines, path);
}

bool ScriptRunner::runLines(const QStringList& lines, const QString& origin)
{
    for (int index = 0; index < lines.size(); ++index) {
        const QString line = lines.at(index).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (!processor->executeCommand(line, qel::main::Command::EXECUTE_SYNCHRONOUS, true)) {
            error = QStringLiteral("%1:%2: '%3' could not be run").arg(origin).arg(index + 1).arg(line);
            return false;
        }
        processor->waitForAll();
    }
    return true;
}
