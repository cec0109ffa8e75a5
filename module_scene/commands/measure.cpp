#include "module_scene/commands/measure.h"

#include "kernel/log/logger.h"
#include "kernel/main/eventmanager.h"
#include "kernel/math/numerictraits.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"
#include "module_scene/selectedpoint.h"

#include <QIcon>
#include <QObject>
#include <boost/bind/bind.hpp>
#include <cmath>

namespace qel {
namespace commands {
namespace scene {

namespace {

typedef math::NumericTraits<math::zReal> Traits;

const char* const LogFile = "module_scene/commands/measure";
const char* const ExecuteFunction = "qel::commands::scene::Measure::execute";

} // namespace

const char* const Measure::CommandName = "measure";

bool Measure::m_Registered = qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&Measure::create);

main::Command* Measure::create()
{
    return new Measure;
}

Measure::Measure()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Sets the measure of the scene")),
              new main::CommandGUIDescriptor(main::CommandGUIDescriptor::MAINMENU, QObject::tr("Scene"), 100,
                                             QObject::tr("Measure"), QObject::tr("Measure"),
                                             new QIcon(":/module_scene/image/measure.png"))),
      m_CastClass(new main::VectorCastClass<double>),
      m_Point1(nullptr),
      m_Point2(nullptr)
{
    enableCloning<Measure>();
    getGUIDescriptors().front()->setShortcut(QKeySequence(Qt::Key_M));

    auto* plain = new main::ParameterSet(0, QObject::tr("Measure of the scene"));
    plain->addParameter(new main::Parameter<double>("measure", QObject::tr("The measure of the scene")));
    addParameterSet(plain);

    auto* unitLine = new main::ParameterSet(1, QObject::tr("Measure by a unit line"));
    unitLine->addParameter(new main::Parameter<double>("unit length", QObject::tr("The length of the unit line")));
    m_Point1 = new main::Parameter<std::vector<double>>("point 1", QObject::tr("first point"));
    m_Point1->setCastClass(m_CastClass.get());
    unitLine->addParameter(m_Point1);
    m_Point2 = new main::Parameter<std::vector<double>>("point 2", QObject::tr("second point"));
    m_Point2->setCastClass(m_CastClass.get());
    unitLine->addParameter(m_Point2);
    addParameterSet(unitLine);

    auto* toolbarEntry =
        new main::CommandGUIDescriptor(main::CommandGUIDescriptor::TOOLBAR, QObject::tr("Scene"), 40,
                                       QObject::tr("Measure"), QObject::tr("Measure"),
                                       new QIcon(":/module_scene/image/measure.png"));
    toolbarEntry->useOnly({*unitLine});
    addGUIDescriptor(toolbarEntry);

    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    for (unsigned long id : {qel::scene::POINTS_SELECTED, qel::scene::POINTS_DESELECTED, qel::scene::POINTS_REPLACED})
        events->registerEventFunction(
            id, new main::EventManager::EventFunction(boost::bind(&Measure::selectedPointsChanged, this, _1)), this);
}

// Working copies only run; the prototype follows the picked points.
Measure::Measure(const Measure& other)
    : Command(other),
      m_CastClass(other.m_CastClass),
      m_Point1(static_cast<main::Parameter<std::vector<double>>*>(getParameterSetByID(1)->getParameter(1))),
      m_Point2(static_cast<main::Parameter<std::vector<double>>*>(getParameterSetByID(1)->getParameter(2)))
{
}

Measure::~Measure()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void Measure::execute()
{
    if (selectedID == 0)
        setMeasure();
    else if (selectedID == 1)
        measureUnitLine();
    else
        log::Logger::log(2000, LogFile, 105, ExecuteFunction, nullptr, "Invalid parameterset specified!");
}

void Measure::setMeasure()
{
    LocalParameter<double> measure;
    if (!solveParameters(typeSolver, selectedParameterSet, {&measure})) {
        log::Logger::log(2000, LogFile, 113, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    if (std::abs(*measure) < Traits::Epsilon) {
        log::Logger::log(2000, LogFile, 117, ExecuteFunction, nullptr, "Measure value cannot be 0 - ignoring.");
        return;
    }
    qel::scene::_GlobalScene()->setMeasuring(*measure);
}

// The points are raw scene coordinates: no scaling applies to them.
void Measure::measureUnitLine()
{
    LocalParameter<double> unitLength;
    LocalParameter<std::vector<double>> point1, point2;
    if (!solveParameters(typeSolver, selectedParameterSet, {&unitLength, &point1, &point2})) {
        log::Logger::log(2000, LogFile, 129, ExecuteFunction, nullptr, "Parameter failure");
        return;
    }
    if ((*point1).size() != 3) {
        log::Logger::log(2000, LogFile, 133, ExecuteFunction, nullptr, "Invalid size (%d) of vector 1 found",
                         static_cast<int>((*point1).size()));
        return;
    }
    if ((*point2).size() != 3) {
        log::Logger::log(2000, LogFile, 138, ExecuteFunction, nullptr, "Invalid size (%d) of vector 2 found",
                         static_cast<int>((*point2).size()));
        return;
    }
    double squaredLength = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double difference = math::snap((*point2)[i] - (*point1)[i]);
        squaredLength += difference * difference;
    }
    const double measure = *unitLength / std::sqrt(squaredLength);
    if (math::snap(measure) == Traits::Zero) {
        log::Logger::log(2000, LogFile, 149, ExecuteFunction, nullptr, "Measure results to 0 - ignoring.");
        return;
    }
    qel::scene::_GlobalScene()->setMeasuring(measure);
}

void Measure::selectedPointsChanged(const main::Event*)
{
    QString first;
    QString second;
    const auto* points = qel::scene::_GlobalScene()->getSelectedPoints();
    if (points->size() == 2) {
        const QString pattern("[%1,%2,%3]");
        const auto p1 = points->front()->getPoint();
        const auto p2 = points->back()->getPoint();
        first = pattern.arg(p1[0]).arg(p1[1]).arg(p1[2]);
        second = pattern.arg(p2[0]).arg(p2[1]).arg(p2[2]);
    }
    m_Point1->setDefaultParameterForDefaultGUI(first);
    m_Point2->setDefaultParameterForDefaultGUI(second);
}

} // namespace scene
} // namespace commands
} // namespace qel
