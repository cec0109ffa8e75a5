#pragma once

#include <QString>
#include <memory>

class QApplication;

namespace qel {
namespace io {
namespace scene {
class Loader;
}
} // namespace io
} // namespace qel

// The scene module, started as the host starts it (which loads the import plug-ins beside
// the executable) and taken down as the host takes it down. Meshes die through the host
// services, which need an application object: one is made (offscreen where no platform is
// asked for) unless there is one already.
class SceneModuleSession
{
public:
    SceneModuleSession(int& argc, char** argv);
    ~SceneModuleSession();
    SceneModuleSession(const SceneModuleSession&) = delete;
    SceneModuleSession& operator=(const SceneModuleSession&) = delete;

    // The plug-in's loader for the file, or null with a message on stderr.
    static std::unique_ptr<qel::io::scene::Loader> loaderFor(const QString& path);

private:
    std::unique_ptr<QApplication> application;
};
