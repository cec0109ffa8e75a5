#pragma once

#include <QString>

#include <sys/types.h>

// Mesa's OpenGL needs an X server even when nothing is shown. Where no display is
// reachable, a private Xvfb is started that lives as long as its starter: it is stopped
// when the launcher goes, and the kernel stops it when the starter dies in any other way
// (a crash, SIGKILL). Shared by qel and qel-bench.
class XvfbLauncher
{
public:
    XvfbLauncher() = default;
    ~XvfbLauncher();
    XvfbLauncher(const XvfbLauncher&) = delete;
    XvfbLauncher& operator=(const XvfbLauncher&) = delete;

    static bool isDisplayReachable(const QString& display);

    // Makes sure DISPLAY names a reachable server; starts Xvfb if needed. Call it on the
    // main thread: the kernel ties the server to the thread that started it, not the process.
    bool ensureDisplay(QString* error);
    bool ownsServer() const { return server > 0; }

private:
    // Starts the server with its display number written to `displayPipe`, and its messages
    // to `messages`; false when fork fails.
    bool spawn(const QString& program, int displayPipe, int messages);
    // The display number the server writes once it listens; empty when it ends first or
    // takes too long.
    static QByteArray readDisplayNumber(int displayPipe);
    void stop();

    pid_t server = 0;
};
