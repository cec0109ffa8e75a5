#pragma once

#include "kernel/gui/fileparameterpanel.h"
#include "kernel/gui/parameterpanelfactory.h"

namespace qel {
namespace main {

// File names chosen with a dialog that the given function creates (the panel deletes it).
class FileParameterPanelFactory : public ParameterPanelFactory
{
public:
    explicit FileParameterPanelFactory(const FileParameterPanel::DialogCreator& createDialog);

    ParameterPanel* createPanel(AbstractParameter* parameter) override;

private:
    FileParameterPanel::DialogCreator createDialog;
};

} // namespace main
} // namespace qel
