#include "kernel/main/macrorecorder.h"

#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"

#include <QFile>
#include <QMutexLocker>
#include <QSaveFile>
#include <QTextStream>

namespace qel {
namespace main {

namespace {

void announce(const char* name, MacroRecorder* recorder)
{
    Event event(qel::events::EventHandler::getInstance()->addEvent("Global", name), nullptr, recorder);
    EventManager::getInstance()->fireEvent(event);
}

bool writeLines(const QString& file, const QStringList& lines)
{
    QSaveFile output(file);
    if (!output.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream stream(&output);
    stream.setCodec("UTF-8");
    for (const QString& line : lines)
        stream << line << '\n';
    stream.flush();
    return stream.status() == QTextStream::Ok && output.commit();
}

} // namespace

bool MacroRecorder::start(const QString& macroFile)
{
    {
        QMutexLocker locker(&mutex);
        if (recording || macroFile.isEmpty())
            return false;
        // Fail now rather than losing a whole recording at the end.
        QFile probe(macroFile);
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        probe.close();
        recording = true;
        file = macroFile;
        commands.clear();
    }
    announce("MACRO_STARTED", this);
    return true;
}

bool MacroRecorder::stop()
{
    QString target;
    QStringList lines;
    {
        QMutexLocker locker(&mutex);
        if (!recording)
            return false;
        recording = false;
        target = file;
        lines = commands;
    }
    const bool written = writeLines(target, lines);
    announce("MACRO_STOPPED", this);
    return written;
}

void MacroRecorder::add(const QString& commandString)
{
    QMutexLocker locker(&mutex);
    if (recording)
        commands << commandString.trimmed();
}

bool MacroRecorder::isRecording() const
{
    QMutexLocker locker(&mutex);
    return recording;
}

QStringList MacroRecorder::getCommands() const
{
    QMutexLocker locker(&mutex);
    return commands;
}

QString MacroRecorder::getFile() const
{
    QMutexLocker locker(&mutex);
    return file;
}

} // namespace main
} // namespace qel
