#pragma once

#include "kernel/main/notifier.h"

namespace qel {
namespace main {

class Event;
class SceneElementParameterPanelFactory;

// Refreshes a factory's names, and the open panels, whenever an element of a scene is
// added, removed or renamed.
class SceneElementParameterPanelNotifier : public Notifier
{
    Q_OBJECT

public:
    explicit SceneElementParameterPanelNotifier(SceneElementParameterPanelFactory* factory);
    ~SceneElementParameterPanelNotifier() override;

    void notify() override;
    void elementsChanged(const Event* event);

private:
    SceneElementParameterPanelFactory* factory;
};

} // namespace main
} // namespace qel
