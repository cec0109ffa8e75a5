#include "kernel/main/contextmenuupdater.h"

#include "kernel/main/menuandtoolbarmanager.h"
#include "kernel/main/overseer.h"

#include <QMenu>
#include <QMetaObject>
#include <QThread>

namespace qel {
namespace main {

namespace {

void fillMenu(const QPointer<QMenu>& menu, const QString& name, const QPointer<MenuAndToolbarManager>& manager)
{
    if (!menu)
        return;
    menu->clear();
    if (manager)
        menu->addActions(manager->getContextMenuActions(name));
}

} // namespace

ContextMenuUpdater::ContextMenuUpdater(QMenu* menu, const QString& name, MenuAndToolbarManager* manager)
    : menu(menu), name(name), manager(manager ? manager : Overseer::getInstance()->getMenuAndToolbarManager())
{
    if (this->manager)
        this->manager->addContextMenuUpdater(this);
    refresh();
}

ContextMenuUpdater::~ContextMenuUpdater()
{
    if (manager)
        manager->removeContextMenuUpdater(this);
}

void ContextMenuUpdater::update(void*, void*)
{
    refresh();
}

void ContextMenuUpdater::refresh()
{
    if (!menu)
        return;
    if (QThread::currentThread() == menu->thread()) {
        fillMenu(menu, name, manager);
        return;
    }
    // Copies only: the updater may be gone when the call runs.
    const QPointer<QMenu> target = menu;
    const QString menuName = name;
    const QPointer<MenuAndToolbarManager> source = manager;
    QMetaObject::invokeMethod(menu.data(), [target, menuName, source]() { fillMenu(target, menuName, source); },
                              Qt::QueuedConnection);
}

void ContextMenuUpdater::forgetManager()
{
    manager = nullptr;
}

} // namespace main
} // namespace qel
