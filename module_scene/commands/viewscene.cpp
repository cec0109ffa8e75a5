#include "module_scene/commands/viewscene.h"

#include "kernel/main/commandguidescriptor.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"

#include <QIcon>
#include <QKeySequence>
#include <QObject>

namespace qel {
namespace commands {
namespace scene {

namespace {

main::CommandGUIDescriptor* entry(main::CommandGUIDescriptor::GUIFLAG flag, const QString& group, int position)
{
    return new main::CommandGUIDescriptor(flag, group, position, QObject::tr("New scene window"),
                                          QObject::tr("New scene window"),
                                          new QIcon(":/module_scene/image/viewscene.png"));
}

} // namespace

const char* const ViewScene::CommandName = "viewscene";

bool ViewScene::m_Registered = qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&ViewScene::create);

main::Command* ViewScene::create()
{
    return new ViewScene;
}

ViewScene::ViewScene()
    : Command(new main::CommandDescriptor(CommandName, QObject::tr("Shows the global scene")),
              entry(main::CommandGUIDescriptor::MAINMENU, QObject::tr("Scene"), 20))
{
    enableCloning<ViewScene>();
    getGUIDescriptors().front()->setShortcut(QKeySequence(Qt::Key_V));
    addGUIDescriptor(entry(main::CommandGUIDescriptor::TOOLBAR, QObject::tr("Scene"), 0));
    addGUIDescriptor(entry(main::CommandGUIDescriptor::EXTRA, QString(), 30));
}

ViewScene::~ViewScene() = default;

void ViewScene::execute()
{
    gui::Viewer::getInstance()->createSceneWindow();
}

} // namespace scene
} // namespace commands
} // namespace qel
