#include "module_scene/commands/selectpoint.h"

#include "kernel/log/logger.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"

#include <QIcon>
#include <QKeySequence>
#include <QObject>

namespace qel {
namespace commands {
namespace scene {

namespace {

using qel::scene::SceneElement;
using qel::scene::SceneVCGModel;

const char* const LogFile = "module_scene/commands/selectpoint";
const char* const ExecuteFunction = "qel::commands::scene::SelectPoint::execute";

void addCoordinates(main::ParameterSet* set)
{
    set->addParameter(new main::Parameter<double>("x", QObject::tr("x coordinate")));
    set->addParameter(new main::Parameter<double>("y", QObject::tr("y coordinate")));
    set->addParameter(new main::Parameter<double>("z", QObject::tr("z coordinate")));
}

bool isModel(const SceneElement* element)
{
    return element && element->getTypeName() == SceneVCGModel::TypeName;
}

void logParameterFailure()
{
    log::Logger::log(2000, LogFile, 121, ExecuteFunction, nullptr, QObject::tr("Parameter failure"));
}

} // namespace

const char* const SelectPoint::CommandName = "selectpoint";

bool SelectPoint::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&SelectPoint::create);

main::Command* SelectPoint::create()
{
    return new SelectPoint;
}

SelectPoint::SelectPoint()
    : SceneCommand(new main::CommandDescriptor(CommandName, QObject::tr("Adds a point to the scene")),
                   new main::CommandGUIDescriptor(main::CommandGUIDescriptor::MAINMENU, QObject::tr("Scene"), 11,
                                                  QObject::tr("Add point"), QObject::tr("Add point"),
                                                  new QIcon(":/module_scene/image/addselectedpoint.png")))
{
    enableCloning<SelectPoint>();
    auto* named = new main::ParameterSet(0, QObject::tr("Add a point on a model"));
    named->addParameter(new main::Parameter<QString>("name", QObject::tr("Element name")));
    addCoordinates(named);
    addParameterSet(named);
    auto* selected = new main::ParameterSet(1, QObject::tr("Add a point on the selected model"));
    addCoordinates(selected);
    addParameterSet(selected);
    auto* picked = new main::ParameterSet(2, QObject::tr("Add a picked point"));
    picked->addParameter(new main::Parameter<QString>("name", QObject::tr("Element name")));
    picked->addParameter(new main::Parameter<std::vector<double>>("point", QObject::tr("Array with 3 elements [x,y,z]")));
    picked->addParameter(new main::Parameter<unsigned int>("index", QObject::tr("face index")));
    addParameterSet(picked);

    main::CommandGUIDescriptor* entry = getGUIDescriptors().front();
    entry->setShortcut(QKeySequence(Qt::Key_P));
    entry->useOnly({*selected});
}

SelectPoint::~SelectPoint() = default;

void SelectPoint::execute()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    LocalParameter<QString> name;
    LocalParameter<double> x, y, z;
    LocalParameter<std::vector<double>> point;
    LocalParameter<unsigned int> index;
    QString elementName;
    double coordinates[3] = {0.0, 0.0, 0.0};
    uint64_t faceIndex = qel::scene::SelectedPoint::NoFace;
    if (selectedID == 0) {
        if (!solveParameters(typeSolver, selectedParameterSet, {&name, &x, &y, &z}))
            return logParameterFailure();
        elementName = *name;
        coordinates[0] = *x;
        coordinates[1] = *y;
        coordinates[2] = *z;
    } else if (selectedID == 1) {
        if (!solveParameters(typeSolver, selectedParameterSet, {&x, &y, &z}))
            return logParameterFailure();
        const qel::scene::Scene::ElementList& selected = scene->getSelectedElements();
        if (selected.empty() || !isModel(selected.front().get())) {
            log::Logger::log(2000, LogFile, 104, ExecuteFunction, nullptr, "Please select an model");
            return;
        }
        elementName = selected.front()->getName();
        const double toScene = scene->getGlobalScalingFactor() / scene->getMeasuring();
        coordinates[0] = *x * toScene;
        coordinates[1] = *y * toScene;
        coordinates[2] = *z * toScene;
    } else if (selectedID == 2) {
        if (!solveParameters(typeSolver, selectedParameterSet, {&name, &point}))
            return logParameterFailure();
        if ((*point).size() != 3) {
            log::Logger::log(2000, LogFile, 131, ExecuteFunction, nullptr, "Invalid array");
            return;
        }
        if (!typeSolver.solve(&index, selectedParameterSet->getParameter(2)))
            return logParameterFailure();
        elementName = *name;
        std::copy((*point).begin(), (*point).end(), coordinates);
        faceIndex = *index;
    } else {
        log::Logger::log(2000, LogFile, 145, ExecuteFunction, nullptr, "Invalid parameterset specified!");
        return;
    }

    const SceneElement::Pointer element = scene->getSceneElement(elementName);
    if (element.isNull()) {
        log::Logger::log(2000, LogFile, 152, ExecuteFunction, nullptr,
                         QObject::tr("Sceneelement '%1' not found").arg(elementName));
        return;
    }
    if (!isModel(element.get())) {
        log::Logger::log(4000, LogFile, 157, ExecuteFunction, nullptr, QObject::tr("Sceneelement is not a model"));
        return;
    }
    const qel::scene::SelectedPoint::Point3 position(static_cast<float>(coordinates[0]),
                                                     static_cast<float>(coordinates[1]),
                                                     static_cast<float>(coordinates[2]));
    scene->addSelectedPoint(new qel::scene::SelectedPoint(element.get(), position, faceIndex));
}

void SelectPoint::focusChanged()
{
    getGUIDescriptors().front()->enableQAction(mp_Element && mp_Element->getTypeName() == SceneVCGModel::TypeName);
}

} // namespace scene
} // namespace commands
} // namespace qel
