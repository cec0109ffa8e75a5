#include "hostoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

namespace {

// The parser names the program after the application object, which the host makes only
// once the display is settled: a plain one stands in until then.
QString helpTextOf(const QCommandLineParser& parser, const QString& program)
{
    if (QCoreApplication::instance())
        return parser.helpText();
    QByteArray name = program.toLocal8Bit();
    char* argv[] = {name.data(), nullptr};
    int argc = 1;
    QCoreApplication application(argc, argv);
    return parser.helpText();
}

} // namespace

bool HostOptions::parse(const QStringList& arguments, QString* error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("3D scene host: load meshes, view and script them."));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    const QCommandLineOption run(QStringLiteral("run"),
                                 QStringLiteral("Execute the command strings of FILE, one a line."), QStringLiteral("FILE"));
    const QCommandLineOption exec(QStringLiteral("exec"), QStringLiteral("Execute one command string (repeatable)."),
                                  QStringLiteral("COMMAND"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render the scene offscreen and save it to OUT.png."),
                                        QStringLiteral("OUT.png"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Size of the screenshot, WIDTHxHEIGHT."),
                                  QStringLiteral("SIZE"));
    const QCommandLineOption offscreenOption(QStringLiteral("offscreen"), QStringLiteral("Show no window."));
    const QCommandLineOption list(QStringLiteral("list-commands"),
                                  QStringLiteral("Print every registered command with its parameter sets."));
    const QCommandLineOption dump(QStringLiteral("dump-scene"),
                                  QStringLiteral("Write the scene as JSON to OUT.json at the end (- for stdout)."),
                                  QStringLiteral("OUT.json"));
    const QCommandLineOption level(QStringLiteral("log-level"),
                                   QStringLiteral("Print log lines up to level N to stderr (0 misuse, 1000 errors, "
                                                  "2000 warnings, 3000 information, 4000 debugging)."),
                                   QStringLiteral("N"));
    parser.addOptions({help, run, exec, screenshot, size, offscreenOption, list, dump, level});
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Mesh files to open at start."),
                                 QStringLiteral("[FILE...]"));

    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(help)) {
        helpRequested = true;
        helpText = helpTextOf(parser, arguments.value(0, QStringLiteral("qel")));
        return true;
    }
    files = parser.positionalArguments();
    runFile = parser.value(run);
    commands = parser.values(exec);
    screenshotFile = parser.value(screenshot);
    offscreen = parser.isSet(offscreenOption);
    listCommands = parser.isSet(list);
    dumpFile = parser.value(dump);
    if (parser.isSet(size)) {
        if (!QRegularExpression(QStringLiteral("^\\d+x\\d+$")).match(parser.value(size)).hasMatch()) {
            *error = QStringLiteral("--size expects WIDTHxHEIGHT, got '%1'").arg(parser.value(size));
            return false;
        }
        screenshotSize = parser.value(size);
    }
    if (parser.isSet(level)) {
        bool ok = false;
        logLevel = parser.value(level).toUInt(&ok);
        if (!ok) {
            *error = QStringLiteral("--log-level expects a number, got '%1'").arg(parser.value(level));
            return false;
        }
        logLevelGiven = true;
    }
    return true;
}
