// qel: the stand-alone host. See `qel --help`.
#include "host.h"
#include "hostoptions.h"
#include "xvfblauncher.h"

#include "kernel/log/logger.h"

#include <QApplication>
#include <QDir>
#include <cstdio>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Without a session (CI, a plain ssh login) Qt complains at every start; a private
// runtime folder, as a session would give, keeps the output to what the user asked for.
void ensureRuntimeDirectory()
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return;
    const QByteArray folder = QDir::tempPath().toLocal8Bit() + "/qel-runtime-" + QByteArray::number(getuid());
    if (::mkdir(folder.constData(), 0700) == 0 || errno == EEXIST)
        qputenv("XDG_RUNTIME_DIR", folder);
}

} // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    HostOptions options;
    QString error;
    if (!options.parse(arguments, &error)) {
        std::fprintf(stderr, "qel: %s\nTry 'qel --help'.\n", error.toLocal8Bit().constData());
        return 2;
    }
    if (options.helpRequested) {
        std::fputs(options.helpText.toLocal8Bit().constData(), stdout);
        return 0;
    }
    if (options.logLevelGiven)
        qel::log::Logger::setStderrLevel(options.logLevel);

    ensureRuntimeDirectory();
    // OpenGL needs an X display even when no window is shown.
    XvfbLauncher xvfb;
    if (!xvfb.ensureDisplay(&error)) {
        std::fprintf(stderr, "qel: %s\n", error.toLocal8Bit().constData());
        return 3;
    }

    // Every view shares one GL context; this must be set before the application exists.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setOrganizationName(QStringLiteral("qel"));
    QCoreApplication::setApplicationName(QStringLiteral("qel"));
    QApplication application(argc, argv);
    Host host(options);
    return host.run();
}
