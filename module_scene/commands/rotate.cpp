#include "module_scene/commands/rotate.h"

#include "kernel/log/logger.h"
#include "kernel/main/eventmanager.h"
#include "kernel/math/quaternion.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/sceneevents.h"

#include <QIcon>
#include <QObject>
#include <cmath>

namespace qel {
namespace commands {
namespace scene {

namespace {

typedef qel::scene::SceneElement::Matrix4 Matrix4;
typedef qel::scene::SceneElement::Vector3 Vector3;
typedef math::Quaternion<math::zReal> Quaternion;

const char* const LogFile = "module_scene/commands/rotate";
const char* const ExecuteFunction = "qel::commands::scene::Rotate::execute";

void addRotation(main::ParameterSet* set)
{
    const char* const names[4] = {"x", "y", "z", "angle"};
    const QString descriptions[4] = {QObject::tr("Specifies the x-coordinate of the rotation vector"),
                                     QObject::tr("Specifies the y-coordinate of the rotation vector"),
                                     QObject::tr("Specifies the z-coordinate of the rotation vector"),
                                     QObject::tr("Angle in radian or degree, selected by the last parameter")};
    for (int i = 0; i < 4; ++i) {
        auto* value = new main::Parameter<double>(names[i], descriptions[i]);
        value->setDefaultParameterForDefaultGUI("0");
        set->addParameter(value);
    }
    auto* degree = new main::Parameter<bool>("degree", QObject::tr("Angle in radian (0) or degree (1)"));
    degree->setDefaultParameterForDefaultGUI("1");
    set->addParameter(degree);
    set->addParameter(new main::Parameter<bool>("absolute", QObject::tr("An absolute or relative rotation")));
}

// The turn by the angle (radians) about the axis, as the element's operator+= takes it.
Matrix4 relativeRotation(double x, double y, double z, double angle)
{
    Vector3 axis(x, y, z);
    const double length = std::sqrt(x * x + y * y + z * z);
    if (length > 0.0)
        axis = axis * (1.0 / length);
    return Quaternion(axis * std::sin(angle / 2.0), std::cos(angle / 2.0)).toMatrix();
}

} // namespace

const char* const Rotate::CommandName = "rotate";

bool Rotate::m_Registered = qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&Rotate::create);

main::Command* Rotate::create()
{
    return new Rotate;
}

QString Rotate::buildCommandString(const QString& name, double x, double y, double z, double angle, bool absolute)
{
    return QString("%1(%2,%3,%4,%5,%6,1,%7)")
        .arg(CommandName, name)
        .arg(x)
        .arg(y)
        .arg(z)
        .arg(angle)
        .arg(absolute ? "1" : "0");
}

QString Rotate::buildCommandString(const QString& name, bool x, bool y, bool z, double angle, bool absolute)
{
    return buildCommandString(name, x ? 1.0 : 0.0, y ? 1.0 : 0.0, z ? 1.0 : 0.0, angle, absolute);
}

Rotate::Rotate()
    : SceneCommand(
        new main::CommandDescriptor(CommandName,
                                    QObject::tr("Rotates a scene element around the given vector by degree or radian")),
        nullptr)
{
    enableCloning<Rotate>();
    auto* named = new main::ParameterSet(0, QObject::tr("Rotate a scene element"));
    named->addParameter(new main::Parameter<QString>("name", QObject::tr("The name of the scene element to rotate")));
    addRotation(named);
    addParameterSet(named);
    auto* focused = new main::ParameterSet(1, QObject::tr("Rotate the active scene element"));
    addRotation(focused);
    addParameterSet(focused);

    auto* treeEntry = new main::CommandGUIDescriptor(main::CommandGUIDescriptor::CONTEXTMENU, "scenetree", 70,
                                                     QObject::tr("Rotate element"), QObject::tr("Rotate element"),
                                                     new QIcon(":/module_scene/image/rotate.png"));
    treeEntry->useOnly({*focused});
    addGUIDescriptor(treeEntry);

    followTransformLock();
}

Rotate::~Rotate() = default;

void Rotate::execute()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    LocalParameter<QString> name;
    LocalParameter<double> x, y, z, angle;
    LocalParameter<bool> degree, absolute;
    qel::scene::SceneElement* element = nullptr;
    if (selectedID == 0) {
        if (!selectedParameterSet || selectedParameterSet->size() == 0)
            return;
        if (!solveParameters(typeSolver, selectedParameterSet, {&name, &x, &y, &z, &angle, &degree, &absolute})) {
            log::Logger::log(2000, LogFile, 121, ExecuteFunction, nullptr, "Parameter failure");
            return;
        }
        element = scene->getSceneElement(*name).get();
    } else if (selectedID == 1
               && solveParameters(typeSolver, selectedParameterSet, {&x, &y, &z, &angle, &degree, &absolute})) {
        element = scene->getFocusedNode().get();
    } else {
        log::Logger::log(2000, LogFile, 129, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    if (!element) {
        log::Logger::log(2000, LogFile, 133, ExecuteFunction, nullptr, "No selected scene element");
        return;
    }
    const double radians = *degree ? *angle / 180.0 * 3.141592653589793 : *angle;
    if (*x == 0.0 && *y == 0.0 && *z == 0.0) {
        log::Logger::log(2000, LogFile, 140, ExecuteFunction, nullptr, "Not a valid rotation axis");
        return;
    }
    if (!element->isTransformable()) {
        log::Logger::log(2000, LogFile, 144, ExecuteFunction, nullptr, "Element '%s' is not transformable",
                         qPrintable(element->getName()));
        return;
    }

    qel::scene::SceneLocker locker(scene.get(), qel::scene::SceneLocker::LOCK_TRANSFORM);
    element->transformStart(true);
    if (*absolute)
        element->rotate(*x, *y, *z, radians);
    else if (radians != 0.0)
        *element += relativeRotation(*x, *y, *z, radians);
    element->transformFinish(nullptr);
}

// Only the scene tree's entry follows the focus.
void Rotate::focusChanged()
{
    enableFocusedEntry();
}

} // namespace scene
} // namespace commands
} // namespace qel
