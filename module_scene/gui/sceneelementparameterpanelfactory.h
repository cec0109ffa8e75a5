#pragma once

#include "kernel/gui/parameterpanelfactory.h"

#include <QString>
#include <QStringList>
#include <list>

namespace qel {
namespace main {

// Offers the names of the global scene's elements for a parameter, optionally only those
// of some types (compared by type key, case-sensitively), sorted.
class SceneElementParameterPanelFactory : public ParameterPanelFactory
{
public:
    // An empty key means no filter.
    explicit SceneElementParameterPanelFactory(const QString& type);
    explicit SceneElementParameterPanelFactory(const QStringList& typeFilter = QStringList());
    SceneElementParameterPanelFactory(const SceneElementParameterPanelFactory& other) = default;
    SceneElementParameterPanelFactory(SceneElementParameterPanelFactory&& other) = default;
    ~SceneElementParameterPanelFactory() override;

    // Re-reads the names from the scene; the panels show the list as it is then.
    void updateList();
    ParameterPanel* createPanel(AbstractParameter* parameter) override;

    const std::list<QString>& getElementNames() const { return elementNames; }
    const QStringList& getTypeFilter() const { return typeFilter; }

private:
    std::list<QString> elementNames;
    QStringList typeFilter;
};

} // namespace main
} // namespace qel
