#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace qel {
namespace main {

// The extras that only the stand-alone host offers (a rendered picture of the scene,
// a JSON dump of its state). A module that can provide them exports
//   extern "C" qel::main::SceneService* getSceneService();
// and the host resolves it by name, as it resolves getFactory.
class SceneService
{
public:
    virtual ~SceneService() = default;

    // The scene as seen by a default view, rendered offscreen; a null image on failure.
    virtual QImage renderScene(const QSize& size) = 0;
    // The scene's state as a JSON document.
    virtual QString dumpScene() = 0;
};

} // namespace main
} // namespace qel
