#pragma once

#include "kernel/util/zobserver.h"

#include <QPointer>
#include <QString>

class QMenu;

namespace qel {
namespace main {

class MenuAndToolbarManager;

// Keeps a widget's own context menu filled with the entries of the named context menu:
// at construction, whenever the menus are rebuilt, and whenever the observed object
// reports a change (entries may have been enabled or disabled).
class ContextMenuUpdater : public qel::util::ZObserver
{
public:
    // The host's menu manager unless another is given. The menu stays its owner's.
    ContextMenuUpdater(QMenu* menu, const QString& name, MenuAndToolbarManager* manager = nullptr);
    ~ContextMenuUpdater() override;

    void update(void* data, void* source) override;
    // Any thread; the menu is refilled on the application thread.
    void refresh();
    // Called by a manager that goes away first.
    void forgetManager();

    const QString& getName() const { return name; }
    QMenu* getMenu() const { return menu.data(); }

private:
    ContextMenuUpdater(const ContextMenuUpdater&) = delete;
    ContextMenuUpdater& operator=(const ContextMenuUpdater&) = delete;

    QPointer<QMenu> menu;
    QString name;
    QPointer<MenuAndToolbarManager> manager;
};

} // namespace main
} // namespace qel
