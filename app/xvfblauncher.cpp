#include "xvfblauncher.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

XvfbLauncher::~XvfbLauncher()
{
    if (!process)
        return;
    process->terminate();
    if (!process->waitForFinished(3000))
        process->kill();
    process->waitForFinished(1000);
    delete process;
}

// Local displays (":N" or "unix:N") are probed on their socket; others are trusted.
bool XvfbLauncher::isDisplayReachable(const QString& display)
{
    if (display.isEmpty())
        return false;
    const QRegularExpression local(QStringLiteral("^(unix)?:(\\d+)(\\.\\d+)?$"));
    const auto match = local.match(display);
    if (!match.hasMatch())
        return true;
    const QByteArray path = QByteArray("/tmp/.X11-unix/X") + match.captured(2).toLatin1();
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0)
        return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    const bool connected = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    ::close(fd);
    return connected;
}

bool XvfbLauncher::ensureDisplay(QString* error)
{
    if (isDisplayReachable(qEnvironmentVariable("DISPLAY")))
        return true;
    const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
    if (xvfb.isEmpty()) {
        *error = QStringLiteral("No X display is reachable and Xvfb is not installed; "
                                "install the Debian package 'xvfb' (apt-get install xvfb) or set DISPLAY.");
        return false;
    }
    process = new QProcess;
    process->setProgram(xvfb);
    // -displayfd 1: the server picks a free display and writes its number to stdout.
    process->setArguments({QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                           QStringLiteral("0"), QStringLiteral("1600x1200x24"), QStringLiteral("-nolisten"),
                           QStringLiteral("tcp")});
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start();
    if (!process->waitForStarted(5000)) {
        *error = QStringLiteral("Could not start %1: %2").arg(xvfb, process->errorString());
        return false;
    }
    QByteArray output;
    while (!output.contains('\n')) {
        if (!process->waitForReadyRead(10000)) {
            *error = QStringLiteral("Xvfb did not report a display: %1")
                         .arg(QString::fromLocal8Bit(process->readAllStandardError()).trimmed());
            return false;
        }
        output += process->readAllStandardOutput();
    }
    const QByteArray display = ":" + output.trimmed();
    qputenv("DISPLAY", display);
    return true;
}
