#include "module_scene/measuresystem.h"

#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "module_scene/sceneevents.h"

#include <QSettings>
#include <boost/bind/bind.hpp>

namespace qel {
namespace util {

namespace {

const char* const MetricSetting = "settings/metricsystem";

} // namespace

// An object of the library, not of the heap: it leaves the event manager when the
// module is unloaded.
MeasureSystem* MeasureSystem::getInstance()
{
    static MeasureSystem instance;
    return &instance;
}

MeasureSystem::MeasureSystem() : m_Metric(true)
{
    readSetting();
    using namespace boost::placeholders;
    main::EventManager::getInstance()->registerEventFunction(
        scene::SETTINGS_CHANGED,
        new main::EventManager::EventFunction(boost::bind(&MeasureSystem::settingsUpdate, this, _1)), this);
}

MeasureSystem::~MeasureSystem()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

bool MeasureSystem::setMetric(bool metric)
{
    m_Metric = metric;
    return m_Metric;
}

double MeasureSystem::measure(double value) const
{
    return m_Metric ? value : value / INCH_MILIMETER;
}

double MeasureSystem::unmeasure(double value) const
{
    return m_Metric ? value : value * INCH_MILIMETER;
}

double MeasureSystem::toImperial(double value)
{
    return value / INCH_MILIMETER;
}

double MeasureSystem::toMetric(double value)
{
    return value * INCH_MILIMETER;
}

QString MeasureSystem::getMeasureExtension() const
{
    return m_Metric ? QStringLiteral("mm") : QStringLiteral("inch");
}

QString MeasureSystem::getMeasureQuadricExtension() const
{
    return m_Metric ? QStringLiteral("qmm") : QStringLiteral("sq in");
}

void MeasureSystem::settingsUpdate(const main::Event*)
{
    readSetting();
}

void MeasureSystem::readSetting()
{
    m_Metric = main::Overseer::getInstance()->getQSettings()->value(MetricSetting, true).toBool();
}

} // namespace util
} // namespace qel
