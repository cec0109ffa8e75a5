#pragma once

#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"

#include <vector>

namespace qel {
namespace main {
class Event;
}
namespace gui {
class ClippingPlaneGUI;
}
namespace scene {

class SceneVCGModel;

// A modifier that switches on one of the six GL clipping planes for its subtree, keeping the
// half-space z >= 0 of its own frame, and that can fill the cut of each model below it with
// a cap in the model's clipping colour, made with the stencil buffer. The scene hands out the
// plane number when the element is added.
class ClippingPlane : public SceneElement, public Scene::NumberedElement
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::ClippingPlane)

public:
    static const QString TypeName;

    ClippingPlane();
    ~ClippingPlane() override;

    static SceneElement* createElement();

    QString getTypeName() const override;
    // Clips whether visible or not: only the grid follows the visibility.
    void draw() override;
    void saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort) override;
    void loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort) override;

    bool isColoringEnabled() const { return coloringEnabled; }
    void setColoringEnabled(bool enabled);

    // -1 while the scene has given none (or had none left).
    int getPlaneNumber() const { return planeNumber; }
    void setPlaneNumber(int number) { planeNumber = number; }
    int getSceneNumber() const override { return planeNumber; }
    void setSceneNumber(int number) override { setPlaneNumber(number); }

    // The models below the plane, depth-first, each before its children.
    std::vector<SceneVCGModel*> getModels() const;

protected:
    void drawGL() override;
    void initializeGL() override;
    QWidget* createCustomGUI() override;

private:
    void glDrawClippedPlane();
    void glDrawCap(SceneVCGModel* model);
    // Draws the path from the root down to the model: the planes on it clip, the models on
    // it are drawn.
    void glDrawChain(SceneElement* element);
    void glEnablePlane() const;
    void drawGrid() const;
    void childAdded(const main::Event* event);
    void childRemoved(const main::Event* event);
    bool isAncestorOf(SceneElement* parent) const;

    int planeNumber = -1;
    gui::ClippingPlaneGUI* gui = nullptr;
    bool coloringEnabled = false;
};

} // namespace scene
} // namespace qel
