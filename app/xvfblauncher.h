#pragma once

#include <QString>

class QProcess;

// Mesa's OpenGL needs an X server even when nothing is shown. Where no display is
// reachable, the host starts a private Xvfb that lives as long as the host.
class XvfbLauncher
{
public:
    XvfbLauncher() = default;
    ~XvfbLauncher();
    XvfbLauncher(const XvfbLauncher&) = delete;
    XvfbLauncher& operator=(const XvfbLauncher&) = delete;

    static bool isDisplayReachable(const QString& display);

    // Makes sure DISPLAY names a reachable server; starts Xvfb if needed.
    bool ensureDisplay(QString* error);
    bool ownsServer() const { return process != nullptr; }

private:
    QProcess* process = nullptr;
};
