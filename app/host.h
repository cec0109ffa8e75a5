#pragma once

#include "hostoptions.h"
#include "progressdisplay.h"

#include <memory>

namespace qel {
namespace main {
class SceneService;
}
}

// The stand-alone host: loads the modules beside the executable, registers their
// commands and the host's own, then either opens the main window or works in batch.
class Host
{
public:
    explicit Host(const HostOptions& options) : options(options) {}

    // Runs after the QApplication exists; returns the process exit code.
    int run();

private:
    void loadModules();
    void printCommands() const;
    bool runScripts();
    QStringList openFilesCommands() const;
    bool saveScreenshot();
    bool printSceneDump();
    int runWindow();
    void shutdown();
    qel::main::SceneService* sceneService() const;

    HostOptions options;
    std::unique_ptr<ProgressDisplay> progress;
};
