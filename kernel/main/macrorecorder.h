#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>

namespace qel {
namespace main {

// Collects command strings while a macro is recorded and writes them, one a line,
// when the recording stops. Fires "MACRO_STARTED" and "MACRO_STOPPED" ("Global").
class MacroRecorder
{
public:
    MacroRecorder() = default;

    // False when a recording runs already or the file can't be written.
    bool start(const QString& file);
    // Writes the file; false when nothing is recorded or writing fails (the commands are dropped either way).
    bool stop();
    // Ignored while not recording.
    void add(const QString& commandString);

    bool isRecording() const;
    QStringList getCommands() const;
    QString getFile() const;

    MacroRecorder(const MacroRecorder&) = delete;
    MacroRecorder& operator=(const MacroRecorder&) = delete;

private:
    mutable QMutex mutex;
    bool recording = false;
    QString file;
    QStringList commands;
};

} // namespace main
} // namespace qel
