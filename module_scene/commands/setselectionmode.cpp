#include "module_scene/commands/setselectionmode.h"

#include "kernel/gui/comboboxparameterpanelfactory.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/outputconsole.h"
#include "kernel/main/overseer.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/commands/selectface.h"
#include "module_scene/commands/selectpoint.h"
#include "module_scene/commands/selectsceneelement.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"

#include <QAction>
#include <QActionGroup>
#include <QIcon>
#include <QKeySequence>
#include <QObject>
#include <boost/bind/bind.hpp>

namespace qel {
namespace commands {
namespace scene {

const char* const SetSelectionMode::CommandName = "setselectionmode";

QList<QAction*> SetSelectionMode::m_RegisteredActions;

bool SetSelectionMode::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&SetSelectionMode::create);

main::Command* SetSelectionMode::create()
{
    return new SetSelectionMode;
}

void SetSelectionMode::registerActionForGroup(QAction* action)
{
    m_RegisteredActions.append(action);
    main::Command* command = main::Overseer::getInstance()->getModuleManager()->getCommand(CommandName);
    auto* prototype = dynamic_cast<SetSelectionMode*>(command);
    if (prototype && prototype->m_ActionGroup)
        prototype->m_ActionGroup->addAction(action);
}

SetSelectionMode::SetSelectionMode()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Sets the selection mode"))),
      m_SceneModes(std::make_shared<SceneModes>()), m_ActionGroup(new QActionGroup(nullptr))
{
    enableCloning<SetSelectionMode>();
    m_Modes[QObject::tr("None")] = MODE_NONE;
    m_Modes[QObject::tr("Model")] = MODE_ELEMENTS;
    m_Modes[QObject::tr("Face")] = MODE_FACES;
    m_Modes[QObject::tr("Point")] = MODE_POINTS;
    m_Modes[QObject::tr("Nearest vertex")] = MODE_NEAREST_VERTEX;
    m_PanelFactory = std::make_shared<main::ComboBoxParameterPanelFactory>(m_Modes);
    auto* set = new main::ParameterSet(0, QObject::tr("Set the selection mode"));
    set->addParameter(new main::Parameter<int>(
        "mode", QObject::tr("The selection mode to set (0=none, 1=model, 2=face, 3=point, 4=nearest vertex)"),
        QString(), true, m_PanelFactory.get()));
    addParameterSet(set);

    m_ActionGroup->setExclusive(true);
    addEntry(0, QObject::tr("Select none"), "selectnone.png", Qt::Key_1, &SetSelectionMode::setSelectNone);
    addEntry(1, QObject::tr("Select model"), "selectmodel.png", Qt::Key_2, &SetSelectionMode::setSelectElements);
    addEntry(2, QObject::tr("(Un-)Select face"), "selectface.png", Qt::Key_3, &SetSelectionMode::setSelectFaces);
    addEntry(3, QObject::tr("Select point"), "selectpoint.png", Qt::Key_4, &SetSelectionMode::setSelectPointsFree);
    addEntry(4, QObject::tr("Select nearest vertex"), "selectnextpoint.png", Qt::Key_5,
             &SetSelectionMode::setSelectPoints);
    getGUIDescriptors().front()->getQAction()->setChecked(true);
    for (QAction* action : m_RegisteredActions)
        m_ActionGroup->addAction(action);
}

// Working copies run only: they share the scene's identifiers but have no actions.
SetSelectionMode::SetSelectionMode(const SetSelectionMode& other)
    : Command(other), m_Modes(other.m_Modes), m_PanelFactory(other.m_PanelFactory),
      m_SceneModes(other.m_SceneModes)
{
}

SetSelectionMode::~SetSelectionMode()
{
    delete m_ActionGroup.data();
}

void SetSelectionMode::addEntry(int position, const QString& text, const char* icon, int key,
                                void (SetSelectionMode::*open)(QAction*, main::CommandGUIDescriptor*))
{
    using namespace boost::placeholders;
    auto* entry = new main::CommandGUIDescriptor(main::CommandGUIDescriptor::TOOLBAR, QObject::tr("Selection Mode"),
                                                 position, text, text,
                                                 new QIcon(QString(":/module_scene/image/") + icon));
    entry->setShortcut(QKeySequence(Qt::CTRL | key));
    entry->setGUIOpenFunction(boost::bind(open, this, _1, _2));
    addGUIDescriptor(entry);
    QAction* action = entry->getQAction();
    action->setCheckable(true);
    m_ActionGroup->addAction(action);
}

void SetSelectionMode::setSelectNone(QAction*, main::CommandGUIDescriptor*)
{
    runMode(MODE_NONE);
}

void SetSelectionMode::setSelectElements(QAction*, main::CommandGUIDescriptor*)
{
    runMode(MODE_ELEMENTS);
}

void SetSelectionMode::setSelectFaces(QAction*, main::CommandGUIDescriptor*)
{
    runMode(MODE_FACES);
}

void SetSelectionMode::setSelectPoints(QAction*, main::CommandGUIDescriptor*)
{
    runMode(MODE_NEAREST_VERTEX);
}

void SetSelectionMode::setSelectPointsFree(QAction*, main::CommandGUIDescriptor*)
{
    runMode(MODE_POINTS);
}

void SetSelectionMode::runMode(Mode mode)
{
    main::Overseer::getInstance()->executeNativeCommand(QString(CommandName) + QString("(%1)").arg(mode));
}

// The checked action stays where it is when a typed command changes the mode.
void SetSelectionMode::execute()
{
    main::OutputConsole* console = main::Overseer::getInstance()->getOutputConsole();
    LocalParameter<int> mode;
    if (!solveParameters(typeSolver, getSelectedParameterSet(), {&mode})) {
        console->appendText("Parameter failure");
        return;
    }
    registerSceneModes();
    if (*mode < MODE_NONE || *mode > MODE_NEAREST_VERTEX) {
        console->appendText(QObject::tr("Invalid mode specified"));
        return;
    }
    qel::scene::_GlobalScene()->switchSelectionMode(sceneModeOf(*mode));
}

void SetSelectionMode::registerSceneModes()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    SceneModes& modes = *m_SceneModes;
    if (modes.elements == 0)
        modes.elements = scene->registerSelectionMode(SelectSceneElement::CommandName, qel::scene::Scene::SELECT_ELEMENTS);
    if (modes.faces == 0)
        modes.faces = scene->registerSelectionMode(SelectFace::CommandName, qel::scene::Scene::SELECT_FACES);
    if (modes.points == 0)
        modes.points = scene->registerSelectionMode(SelectPoint::CommandName, qel::scene::Scene::SELECT_POINTS);
    if (modes.pointsFree == 0)
        modes.pointsFree =
            scene->registerSelectionMode(SelectPoint::CommandName, qel::scene::Scene::SELECT_POINTS_FREE);
}

// The command's point modes cross the scene's kinds: 3 is the free point, 4 the vertex.
unsigned int SetSelectionMode::sceneModeOf(int mode) const
{
    switch (mode) {
    case MODE_ELEMENTS:
        return m_SceneModes->elements;
    case MODE_FACES:
        return m_SceneModes->faces;
    case MODE_POINTS:
        return m_SceneModes->pointsFree;
    case MODE_NEAREST_VERTEX:
        return m_SceneModes->points;
    default:
        return 0;
    }
}

} // namespace scene
} // namespace commands
} // namespace qel
