#include "module_scene/gui/sceneelementparameterpanelfactory.h"

#include "kernel/gui/comboboxparameterpanel.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"

namespace qel {
namespace main {

SceneElementParameterPanelFactory::SceneElementParameterPanelFactory(const QString& type)
{
    if (!type.isEmpty())
        typeFilter << type;
}

SceneElementParameterPanelFactory::SceneElementParameterPanelFactory(const QStringList& typeFilter)
    : typeFilter(typeFilter)
{
}

SceneElementParameterPanelFactory::~SceneElementParameterPanelFactory() = default;

void SceneElementParameterPanelFactory::updateList()
{
    elementNames.clear();
    const util::ZPointer<scene::Scene> globalScene = scene::_GlobalScene();
    scene::Scene::ElementList elements;
    {
        scene::SceneLocker locker(globalScene, scene::SceneLocker::LOCK_ELEMENTS);
        elements = *globalScene->getElementList();
    }
    for (const scene::Scene::ElementPointer& element : elements) {
        if (typeFilter.isEmpty() || typeFilter.contains(element->getTypeName(), Qt::CaseSensitive))
            elementNames.push_back(element->getName());
    }
    elementNames.sort();
}

ParameterPanel* SceneElementParameterPanelFactory::createPanel(AbstractParameter* parameter)
{
    updateList();
    auto* panel = new ComboBoxParameterPanel(parameter, &elementNames);
    registerPanel(panel);
    return panel;
}

} // namespace main
} // namespace qel
