#include "module_scene/commands/transform.h"

#include "kernel/log/logger.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"

#include <QObject>
#include <QStringList>

namespace qel {
namespace commands {
namespace scene {

namespace {

typedef qel::scene::SceneElement::Matrix4 Matrix4;

const char* const LogFile = "module_scene/commands/transform";
const char* const ExecuteFunction = "qel::commands::scene::Transform::execute";

} // namespace

const char* const Transform::CommandName = "transform";

bool Transform::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&Transform::create);

main::Command* Transform::create()
{
    return new Transform;
}

QString Transform::getCommandString(const qel::scene::SceneElement* element)
{
    return QString(CommandName) + "(" + element->getName() + ",[" + matrixValues(element) + "])";
}

main::Command* Transform::getTransformCommand(const qel::scene::SceneElement* element)
{
    auto* command = new Transform;
    command->m_Execute = false;
    command->setSelectedID(0);
    main::ParameterSet* set = command->getParameterSets()->front();
    command->setSelectedParameterSet(set);
    set->getParameter(0)->castString(element->getName());
    const QString matrix = "[" + matrixValues(element) + "]";
    if (!command->m_Matrix->castString(matrix)) {
        log::Logger::log(1000, LogFile, 61, "qel::commands::scene::Transform::getTransformCommand", nullptr,
                         "Couldn't cast string '%s' to a zReal vector!", qPrintable(matrix));
    }
    return command;
}

QString Transform::matrixValues(const qel::scene::SceneElement* element)
{
    const Matrix4& matrix = element->getTransformMatrix();
    QStringList values;
    for (int i = 0; i < 16; ++i)
        values << QString::number(matrix[i], 'g', 16);
    return values.join(",");
}

Transform::Transform()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Sets the transformmatrix of a scene element"))),
      m_CastClass(new main::VectorCastClass<double>),
      m_Matrix(nullptr),
      m_Execute(true)
{
    enableCloning<Transform>();
    auto* set = new main::ParameterSet(0, QObject::tr("Transform a scene element"));
    set->addParameter(new main::Parameter<QString>("name", QObject::tr("The name of the scene element")));
    m_Matrix = new main::Parameter<std::vector<double>>("matrix", QObject::tr("Transform matrix"));
    m_Matrix->setCastClass(m_CastClass.get());
    set->addParameter(m_Matrix);
    addParameterSet(set);
}

// The copy's matrix parameter is its own set's.
Transform::Transform(const Transform& other)
    : Command(other),
      m_CastClass(other.m_CastClass),
      m_Matrix(static_cast<main::Parameter<std::vector<double>>*>(getParameterSets()->front()->getParameter(1))),
      m_Execute(other.m_Execute)
{
}

Transform::~Transform() = default;

void Transform::execute()
{
    if (!m_Execute) {
        setDone(true);
        return;
    }
    if (selectedID != 0)
        return;
    LocalParameter<QString> name;
    LocalParameter<std::vector<double>> values;
    if (!solveParameters(typeSolver, selectedParameterSet, {&name, &values})) {
        log::Logger::log(2000, LogFile, 109, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    if ((*values).size() != 16) {
        log::Logger::log(1000, LogFile, 113, ExecuteFunction, nullptr, "Invalid size (%d) of vector found",
                         static_cast<int>((*values).size()));
        return;
    }
    Matrix4 matrix;
    for (int i = 0; i < 16; ++i)
        matrix[i] = (*values)[i];
    util::ZPointer<qel::scene::SceneElement> element = qel::scene::_GlobalScene()->getSceneElement(*name);
    if (element.isNull()) {
        log::Logger::log(2000, LogFile, 121, ExecuteFunction, nullptr, "Element with name '%s' wasn't found",
                         qPrintable(*name));
        return;
    }
    if (!element->isTransformable()) {
        log::Logger::log(4000, LogFile, 126, ExecuteFunction, nullptr, "Element '%s' is not transformable",
                         qPrintable(element->getName()));
        return;
    }
    element->setTransformMatrix(matrix);
}

} // namespace scene
} // namespace commands
} // namespace qel
