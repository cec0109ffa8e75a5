#include "module_scene/undoguard.h"

#include "kernel/main/eventmanager.h"
#include "kernel/main/undoredomanager.h"
#include "module_scene/sceneevents.h"

#include <boost/bind/bind.hpp>

namespace qel {
namespace scene {

UndoGuard::UndoGuard()
{
    using namespace boost::placeholders;
    main::EventManager::getInstance()->registerEventFunction(
        SCENE_ELEMENT_DELETED, new main::EventManager::EventFunction(boost::bind(&UndoGuard::elementDeleted, this, _1)),
        this);
}

UndoGuard::~UndoGuard()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void UndoGuard::elementDeleted(const main::Event*)
{
    main::UndoRedoManager::getInstance()->clear();
}

} // namespace scene
} // namespace qel
