// What a model element puts on the screen: its mesh in the model colour at the scene's
// scale, the red overlay of its selected faces, the wire frame, only the box outline while
// the mesh is busy, and nothing of a hidden mesh.
#include "mesh/meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenevcgmodel.h"
#include "test_meshrenderoffscreen.h"

#include <gtest/gtest.h>

using qel::scene::MeshModel;
using qel::scene::SceneVCGModel;
using namespace qel::test;

namespace {

const QColor BLACK(0, 0, 0);
const QColor GREEN(0, 255, 0);
const QColor RED(255, 0, 0);

// Inside the square at half size, and inside the square only at full size.
const Probe NEAR_CENTRE{30, 28};
const Probe NEAR_CORNER{18, 45};

// A square in z = 0 with its corners on the centres of pixels 16 and 47, in green.
qel::util::ZPointer<SceneVCGModel> makeSquareModel()
{
    auto* mesh = new MeshModel;
    buildPixelSquare(mesh->cm);
    mesh->busy = false;
    qel::util::ZPointer<SceneVCGModel> model(new SceneVCGModel(mesh, "square"));
    model->setModelColor(GREEN);
    return model;
}

class ModelDrawTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(target.isValid()); }
    void TearDown() override
    {
        // The display list goes with the mesh, in this context.
        target.makeCurrent();
        model = qel::util::ZPointer<SceneVCGModel>();
    }

    QColor drawnAt(const Probe& probe)
    {
        return target.pixel(probe.x, probe.y);
    }

    void draw()
    {
        target.makeCurrent();
        target.clear();
        model->draw();
    }

    OffscreenTarget target;
    qel::util::ZPointer<SceneVCGModel> model = makeSquareModel();
};

} // namespace

TEST_F(ModelDrawTest, TheMeshInTheModelColourAndTheSelectionInRed)
{
    draw();
    EXPECT_TRUE(sameColor(GREEN, drawnAt(IN_FACE_0)));
    EXPECT_TRUE(sameColor(GREEN, drawnAt(IN_FACE_1)));
    EXPECT_TRUE(sameColor(BLACK, target.pixel(5, 58)));

    model->addFaceSelection(std::vector<unsigned int>{0});
    draw();
    EXPECT_TRUE(sameColor(RED, drawnAt(IN_FACE_0)));
    EXPECT_TRUE(sameColor(GREEN, drawnAt(IN_FACE_1)));

    // The scene's scale goes onto the mesh.
    model->clearFaceSelection();
    model->setScalingFactor(0.5);
    draw();
    EXPECT_TRUE(sameColor(GREEN, drawnAt(NEAR_CENTRE)));
    EXPECT_TRUE(sameColor(BLACK, drawnAt(NEAR_CORNER)));
}

TEST_F(ModelDrawTest, WireframeBusyAndHiddenMeshesLeaveTheFacesEmpty)
{
    model->setWireframeEnabled(true);
    draw();
    EXPECT_TRUE(sameColor(BLACK, drawnAt(IN_FACE_0)));
    EXPECT_TRUE(sameColor(GREEN, target.pixel(16, 30))) << "the left edge";

    // Busy: the box outline only, whatever the wire frame says.
    model->setWireframeEnabled(false);
    model->getMeshModel()->busy = true;
    draw();
    EXPECT_TRUE(sameColor(BLACK, drawnAt(IN_FACE_0)));
    EXPECT_TRUE(sameColor(BLACK, drawnAt(IN_FACE_1)));
    EXPECT_TRUE(sameColor(GREEN, target.pixel(16, 30))) << "the outline";

    model->getMeshModel()->busy = false;
    model->getMeshModel()->visible = false;
    draw();
    EXPECT_TRUE(sameColor(BLACK, drawnAt(IN_FACE_0)));
    EXPECT_TRUE(sameColor(BLACK, target.pixel(16, 30)));
}
