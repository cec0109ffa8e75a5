#include "module_scene/commands/clearselection.h"

#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenevcgmodel.h"

#include <QIcon>
#include <QKeySequence>
#include <QObject>

namespace qel {
namespace commands {
namespace scene {

const char* const ClearSelection::CommandName = "clearselection";

bool ClearSelection::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&ClearSelection::create);

main::Command* ClearSelection::create()
{
    return new ClearSelection;
}

ClearSelection::ClearSelection()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Clears the face selection")),
              new main::CommandGUIDescriptor(main::CommandGUIDescriptor::TOOLBAR, QObject::tr("Selection Mode"), 10,
                                             QObject::tr("Clear face selection"), QObject::tr("Clear face selection"),
                                             new QIcon(":/module_scene/image/deselectallfaces.png")))
{
    enableCloning<ClearSelection>();
    getGUIDescriptors().front()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
}

ClearSelection::~ClearSelection() = default;

// The scene's observers hear of it once, also when there is no model.
void ClearSelection::execute()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    for (const qel::scene::SceneElement::Pointer& model : scene->getSceneElementsOfType(qel::scene::SceneVCGModel::TypeName))
        static_cast<qel::scene::SceneVCGModel*>(model.get())->clearFaceSelection();
    scene->informObservers(nullptr);
}

} // namespace scene
} // namespace commands
} // namespace qel
