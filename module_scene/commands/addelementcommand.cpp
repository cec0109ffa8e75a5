#include "module_scene/commands/addelementcommand.h"

#include "kernel/main/commanddescriptor.h"
#include "kernel/main/commandguidescriptor.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"

#include <QIcon>
#include <QObject>

namespace qel {
namespace commands {
namespace scene {

AddElementCommand::AddElementCommand(const char* name, const QString& description, const MenuEntry& entry)
    : Command(new main::CommandDescriptor(name, description),
              new main::CommandGUIDescriptor(main::CommandGUIDescriptor::MAINMENU, QObject::tr("Scene"), entry.position,
                                             entry.text, entry.text,
                                             new QIcon(":/module_scene/image/" + entry.icon)))
{
    getGUIDescriptors().front()->setShortcut(entry.shortcut);
}

void AddElementCommand::execute()
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    util::ZPointer<qel::scene::SceneElement> element(createElement(scene.get()));
    if (!element)
        return;
    scene->addElement(element.get());
    placeElement(scene.get(), element.get());
    scene->triggerUpdate();
}

void AddElementCommand::placeElement(qel::scene::Scene*, qel::scene::SceneElement*) {}

} // namespace scene
} // namespace commands
} // namespace qel
