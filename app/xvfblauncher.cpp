#include "xvfblauncher.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

const int REPORT_TIMEOUT_MS = 10000;
const int STOP_TIMEOUT_MS = 3000;

// Whether the child ended within the time; one reaped elsewhere counts as ended.
bool reaped(pid_t child, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        const pid_t result = ::waitpid(child, nullptr, WNOHANG);
        if (result == child || (result < 0 && errno != EINTR))
            return true;
        if (clock.elapsed() >= timeoutMs)
            return false;
        ::usleep(10000);
    }
}

// What the server wrote to its message file, which it shares with us.
QString messagesOf(std::FILE* messages)
{
    QFile file;
    if (!messages || !file.open(fileno(messages), QIODevice::ReadOnly) || !file.seek(0))
        return QString();
    return QString::fromLocal8Bit(file.readAll()).trimmed();
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

XvfbLauncher::~XvfbLauncher()
{
    stop();
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
    int displayPipe[2];
    if (::pipe2(displayPipe, O_CLOEXEC) != 0) {
        *error = QStringLiteral("Could not start %1: %2").arg(xvfb, systemError());
        return false;
    }
    // The server's messages go to a file without a name: read when it fails, gone with it.
    std::FILE* messages = std::tmpfile();
    const bool started = messages && spawn(xvfb, displayPipe[1], fileno(messages));
    if (!started)
        *error = QStringLiteral("Could not start %1: %2").arg(xvfb, systemError());
    ::close(displayPipe[1]);
    const QByteArray number = started ? readDisplayNumber(displayPipe[0]) : QByteArray();
    ::close(displayPipe[0]);
    if (started && number.isEmpty()) {
        stop();
        *error = QStringLiteral("Xvfb did not report a display: %1").arg(messagesOf(messages));
    }
    if (messages)
        std::fclose(messages);
    if (number.isEmpty())
        return false;
    qputenv("DISPLAY", ":" + number);
    return true;
}

bool XvfbLauncher::spawn(const QString& program, int displayPipe, int messages)
{
    // Everything the child uses is made before the fork: a copy of a threaded process may
    // only make calls that are safe in a signal handler.
    const QByteArray path = QFile::encodeName(program);
    const QByteArray failure = "Could not execute " + path + "\n";
    // -displayfd 1: the server picks a free display and writes its number to stdout.
    const char* const arguments[] = {path.constData(), "-displayfd", "1", "-screen", "0", "1600x1200x24",
                                     "-nolisten", "tcp", nullptr};
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    sigset_t noSignals;
    sigemptyset(&noSignals);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        // The server dies with its starter, however the starter ends; if that already
        // happened, it doesn't start.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent)
            ::_exit(1);
        ::sigprocmask(SIG_SETMASK, &noSignals, nullptr);
        if (nothing >= 0)
            ::dup2(nothing, STDIN_FILENO);
        ::dup2(displayPipe, STDOUT_FILENO);
        ::dup2(messages, STDERR_FILENO);
        ::execv(path.constData(), const_cast<char* const*>(arguments));
        const ssize_t written = ::write(STDERR_FILENO, failure.constData(), static_cast<size_t>(failure.size()));
        static_cast<void>(written);
        ::_exit(127);
    }
    const int forkError = errno;
    if (nothing >= 0)
        ::close(nothing);
    errno = forkError;
    if (child < 0)
        return false;
    server = child;
    return true;
}

QByteArray XvfbLauncher::readDisplayNumber(int displayPipe)
{
    QByteArray output;
    QElapsedTimer clock;
    clock.start();
    while (!output.contains('\n')) {
        const qint64 left = REPORT_TIMEOUT_MS - clock.elapsed();
        pollfd ready{displayPipe, POLLIN, 0};
        const int polled = left > 0 ? ::poll(&ready, 1, static_cast<int>(left)) : 0;
        if (polled < 0 && errno == EINTR)
            continue;
        if (polled <= 0)
            return QByteArray();
        char buffer[64];
        const ssize_t got = ::read(displayPipe, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return QByteArray();
        output.append(buffer, static_cast<int>(got));
    }
    const QByteArray number = output.trimmed();
    bool ok = false;
    number.toUInt(&ok);
    return ok ? number : QByteArray();
}

void XvfbLauncher::stop()
{
    if (server <= 0)
        return;
    ::kill(server, SIGTERM);
    if (!reaped(server, STOP_TIMEOUT_MS)) {
        ::kill(server, SIGKILL);
        reaped(server, STOP_TIMEOUT_MS);
    }
    server = 0;
}
