#include "kernel/gui/fileparameterpanelfactory.h"

namespace qel {
namespace main {

FileParameterPanelFactory::FileParameterPanelFactory(const FileParameterPanel::DialogCreator& createDialog)
    : createDialog(createDialog)
{
}

ParameterPanel* FileParameterPanelFactory::createPanel(AbstractParameter* parameter)
{
    auto* panel = new FileParameterPanel(parameter, createDialog);
    registerPanel(panel);
    return panel;
}

} // namespace main
} // namespace qel
