#pragma once

#include <QString>
#include <QStringList>

// What the user asked for on the command line.
struct HostOptions
{
    QString runFile;
    QString screenshotFile;
    QString screenshotSize = QStringLiteral("1024x768");
    bool offscreen = false;
    bool listCommands = false;
    QString dumpFile;
    bool logLevelGiven = false;
    unsigned int logLevel = 2000;
    QStringList commands; // given with --exec, run before --run
    QStringList files;    // mesh files to open at start

    // True when no window is wanted: the host works and quits.
    bool isBatch() const { return offscreen || listCommands || !dumpFile.isEmpty() || !screenshotFile.isEmpty(); }

    // Parses the arguments; on failure fills `error` and returns false. `--help` fills
    // `helpText` and returns true with `helpRequested` set.
    bool parse(const QStringList& arguments, QString* error);
    bool helpRequested = false;
    QString helpText;
};
