#include "module_scene/commands/removeselectedpoint.h"

#include "kernel/log/logger.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"

#include <QObject>

namespace qel {
namespace commands {
namespace scene {

namespace {

const char* const LogFile = "module_scene/commands/removeselectedpoint";
const char* const ExecuteFunction = "qel::commands::scene::RemoveSelectedPoint::execute";

} // namespace

const char* const RemoveSelectedPoint::CommandName = "removeselectedpoint";

bool RemoveSelectedPoint::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&RemoveSelectedPoint::create);

main::Command* RemoveSelectedPoint::create()
{
    return new RemoveSelectedPoint;
}

RemoveSelectedPoint::RemoveSelectedPoint()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Removes a selected point")))
{
    enableCloning<RemoveSelectedPoint>();
    auto* set = new main::ParameterSet(0, QObject::tr("Remove a selected point"));
    set->addParameter(new main::Parameter<int>("index", QObject::tr("Index of the point")));
    addParameterSet(set);
}

RemoveSelectedPoint::~RemoveSelectedPoint() = default;

// A negative index counts as past the end.
void RemoveSelectedPoint::execute()
{
    if (selectedID != 0) {
        log::Logger::log(2000, LogFile, 62, ExecuteFunction, nullptr, "Invalid parameterset specified!");
        return;
    }
    LocalParameter<int> index;
    if (!solveParameters(typeSolver, selectedParameterSet, {&index})) {
        log::Logger::log(2000, LogFile, 68, ExecuteFunction, nullptr, QObject::tr("Parameter failure"));
        return;
    }
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    const std::size_t count = scene->getSelectedPoints()->size();
    if (static_cast<unsigned int>(*index) >= count) {
        log::Logger::log(4000, LogFile, 74, ExecuteFunction, nullptr,
                         QObject::tr("The index must be between 0 and %1").arg(count));
        return;
    }
    scene->removeSelectedPoint(static_cast<unsigned int>(*index));
}

} // namespace scene
} // namespace commands
} // namespace qel
