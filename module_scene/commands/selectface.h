#pragma once

#include "module_scene/commands/scenecommand.h"

#include <QString>
#include <map>
#include <vector>

class QAction;

namespace qel {
namespace scene {
class SceneVCGModel;
}
namespace commands {
namespace scene {

// selectface(model,index) toggles one face; selectface(model,[i,j,...],mode) toggles (0),
// selects (1) or unselects (2) a list. The scene tree's two entries select or unselect the
// faces of the focused selection body (sphere or plane), narrowed to the patches around the
// selected points when there are any.
class SelectFace : public SceneCommand
{
public:
    typedef std::map<qel::scene::SceneElement*, std::vector<unsigned int>> FaceMap;

    enum Mode { MODE_TOGGLE = 0, MODE_SELECT = 1, MODE_UNSELECT = 2 };

    static const char* const CommandName;

    static main::Command* create();
    // selectface(model,[i,j,...],mode)
    static QString buildCommandString(const QString& model, const std::vector<unsigned int>& faces, unsigned int mode);

    SelectFace();
    SelectFace(const SelectFace& other) = default;
    ~SelectFace() override;

    void execute() override;

    // The open functions of the scene tree's entries.
    void useSelectedElementForSelect(QAction* action, main::CommandGUIDescriptor* descriptor);
    void useSelectedElementForUnselect(QAction* action, main::CommandGUIDescriptor* descriptor);

    // With selected points, keeps of each model's faces only the connected patches around
    // the points on it (a patch twice for two points in it); without, leaves the map alone.
    static void filterFaces(FaceMap& faces);

protected:
    // The entries are offered for a focused sphere, plane or bounding box.
    void focusChanged() override;

private:
    void useSelectedElement(unsigned int mode, const char* function);
    // One prepared command per model, recorded as its command string but never parsed.
    void executeFaces(const FaceMap& faces, unsigned int mode) const;
    void setParameterValues(main::ParameterSet* set, const QString& model, const std::vector<unsigned int>& faces,
                            unsigned int mode) const;
    void applyTo(qel::scene::SceneVCGModel* model, const std::vector<unsigned int>& faces, unsigned int mode) const;

    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
