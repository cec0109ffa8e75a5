#include "module_scene/commands/setmeasuresystem.h"

#include "kernel/gui/comboboxparameterpanelfactory.h"
#include "kernel/main/overseer.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/measuresystem.h"
#include "module_scene/modulescenefactory.h"

#include <QObject>
#include <QSettings>

namespace qel {
namespace commands {
namespace scene {

namespace {

const char* const MetricSetting = "settings/metricsystem";

} // namespace

bool SetMeasureSystem::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&SetMeasureSystem::create);

main::Command* SetMeasureSystem::create()
{
    return new SetMeasureSystem;
}

SetMeasureSystem::SetMeasureSystem()
    : SettingsCommand(new main::CommandDescriptor("measuresystem", QObject::tr("Sets the measure system")),
                      new main::CommandGUIDescriptor(main::CommandGUIDescriptor::SETTINGS, QObject::tr("Project"), 10,
                                                     QObject::tr("The shown measure system"),
                                                     QObject::tr("The shown measure system"), nullptr))
{
    enableCloning<SetMeasureSystem>();
    m_Systems[QObject::tr("Metric system")] = 1;
    m_Systems[QObject::tr("Imperial system")] = 0;
    m_PanelFactory = std::make_shared<main::ComboBoxParameterPanelFactory>(m_Systems);

    auto* set = new main::ParameterSet(0, QObject::tr("Measure system"));
    auto* system = new main::Parameter<int>("system", QObject::tr("metric=1,imperial=0"), QString(), true,
                                            m_PanelFactory.get());
    system->setDefaultParameterForDefaultGUI(systemText(util::MeasureSystem::getInstance()->isMetric()));
    set->addParameter(system);
    addParameterSet(set);
}

SetMeasureSystem::~SetMeasureSystem() = default;

void SetMeasureSystem::execute()
{
    main::OutputConsole* console = main::Overseer::getInstance()->getOutputConsole();
    LocalParameter<int> system;
    if (!solveParameters(typeSolver, getSelectedParameterSet(), {&system})) {
        console->appendText(QObject::tr("Parameter failure"));
        return;
    }
    if (*system != 0 && *system != 1) {
        console->appendText(QObject::tr("Only 1(metric) or 0(imperial) are valid inputs"));
        return;
    }
    const bool metric = *system != 0;
    main::Overseer::getInstance()->getQSettings()->setValue(MetricSetting, metric);
    getSelectedParameterSet()->getParameter(0)->setDefaultParameterForDefaultGUI(systemText(metric));
    util::MeasureSystem::getInstance()->setMetric(metric);
    settingsChanged();
}

QString SetMeasureSystem::systemText(bool metric) const
{
    return metric ? QObject::tr("Metric system") : QObject::tr("Imperial system");
}

} // namespace scene
} // namespace commands
} // namespace qel
