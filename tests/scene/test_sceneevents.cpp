#include "kernel/events/eventhandler.h"
#include "module_scene/sceneevents.h"

#include <gtest/gtest.h>
#include <set>

using qel::events::EventHandler;

namespace {

struct Declared
{
    const char* group;
    const char* name;
    unsigned long id;
};

#define DECLARED(group, name) Declared{group, #name, qel::scene::name}

// The names are spelt out here, apart from the header, so a wrong literal there shows.
const Declared AllEvents[] = {
    DECLARED("Scene", SCENE_ELEMENT_ADDED), DECLARED("Scene", SCENE_ELEMENT_REMOVED),
    DECLARED("Scene", SCENE_ELEMENT_RENAMED), DECLARED("Scene", SCENE_ELEMENTS_RENAMED),
    DECLARED("Scene", SCENE_ELEMENT_FOCUSED), DECLARED("Scene", SCENE_ELEMENT_SHOWN),
    DECLARED("Scene", SCENE_ELEMENT_HIDDEN), DECLARED("Scene", SCENE_ELEMENT_BBOX_SHOWN),
    DECLARED("Scene", SCENE_ELEMENT_BBOX_HIDDEN), DECLARED("Scene", SCENE_ELEMENT_CHILD_ADDED),
    DECLARED("Scene", SCENE_ELEMENT_CHILD_REMOVED), DECLARED("Scene", SCENE_ELEMENT_CHILDS_REORDERED),
    DECLARED("Scene", SCENE_ELEMENTS_REPARENTED), DECLARED("Scene", SCENE_ELEMENTS_SELECTION),
    DECLARED("Scene", SCENE_ELEMENT_BEFORE_DELETED), DECLARED("Scene", SCENE_ELEMENT_DELETED),
    DECLARED("Scene", SCENE_ELEMENT_TRANSFORM_START), DECLARED("Scene", SCENE_ELEMENT_TRANSFORM_STARTING),
    DECLARED("Scene", SCENE_ELEMENT_TRANSFORM_FINISH), DECLARED("Scene", SCENE_ELEMENT_TRANSFORM_FINISHED),
    DECLARED("Scene", SCENE_ELEMENT_MULTIPLE_TRANSFORM_START), DECLARED("Scene", SCENE_ELEMENT_MULTIPLE_TRANSFORM_FINISH),
    DECLARED("Scene", SCENE_MEASURING_CHANGED), DECLARED("Scene", SCENE_GLOBALSCALING_CHANGED),
    DECLARED("Scene", SCENE_TRANSFORM_LOCKED), DECLARED("Scene", SCENE_TRANSFORM_UNLOCKED),
    DECLARED("Scene", SCENE_STRUCTURE_LOCKED), DECLARED("Scene", SCENE_STRUCTURE_UNLOCKED),
    DECLARED("Scene", SCENE_REDRAW), DECLARED("Scene", SCENEPANEL_CHANGED), DECLARED("Scene", POINTS_SELECTED),
    DECLARED("Scene", POINTS_DESELECTED), DECLARED("Scene", POINTS_REPLACED),
    DECLARED("Scene", LINESSCENEELEMENT_COLORCHANGED), DECLARED("Scene", LINESSCENEELEMENT_DATACHANGED),
    DECLARED("Scene", RESCALE_DATA), DECLARED("Global", SETTINGS_CHANGED), DECLARED("Global", KERNEL_IS_ONLINE),
    DECLARED("Global", MACRO_STARTED), DECLARED("Global", MACRO_STOPPED), DECLARED("Global", REDO_AVAILABLE),
    DECLARED("Global", REDO_NOT_AVAILABLE), DECLARED("Global", RESET_SETTINGS), DECLARED("Global", SETTINGS_LOCKED),
    DECLARED("Global", SETTINGS_UNLOCKED), DECLARED("Global", UNDO_AVAILABLE), DECLARED("Global", UNDO_NOT_AVAILABLE),
    DECLARED("History", SAVEPOINT_NEW), DECLARED("History", SAVEPOINT_REMOVE), DECLARED("History", SAVEPOINT_RESTORE),
};

#undef DECLARED

} // namespace

TEST(SceneEvents, EveryEventHasItsOwnIdUnderItsGroupAndName)
{
    auto* handler = EventHandler::getInstance();
    std::set<unsigned long> ids;
    for (const Declared& event : AllEvents) {
        SCOPED_TRACE(event.name);
        EXPECT_NE(0u, event.id);
        EXPECT_TRUE(ids.insert(event.id).second);
        EXPECT_EQ(event.id, handler->getEventID(event.group, event.name));
        EXPECT_EQ(event.id, handler->addEvent(event.group, event.name)); // same name, same id
    }
    EXPECT_EQ(50u, ids.size());
}
