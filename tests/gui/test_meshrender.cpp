#include "../mesh/meshfixtures.h"
#include "module_scene/gui/sharedcontext.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/meshrenderer.h"
#include "module_scene/meshmodel.h"
#include "test_meshrenderoffscreen.h"

#include <gtest/gtest.h>

using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::Color4b;
using qel::scene::CVertexO;
using qel::scene::MeshBounds;
using qel::scene::MeshModel;
using qel::scene::MeshNormals;
using qel::scene::MeshRenderer;
using namespace qel::test;

namespace {

const QColor BACKGROUND(0, 0, 0);
const QColor RED(255, 0, 0);
const QColor GREEN(0, 255, 0);
const QColor BLUE(0, 0, 255);
const QColor YELLOW(255, 255, 0);
const QColor CYAN(0, 255, 255);

// Pixels of the pixel square: on the left edge, on the diagonal, a corner, and outside.
const Probe ON_LEFT_EDGE{16, 30};
const Probe ON_DIAGONAL{30, 30};
const Probe ON_CORNER{16, 16};
const Probe OUTSIDE{5, 58};

void setVertexColors(CMeshO& mesh, const Color4b& color)
{
    for (CVertexO& vertex : mesh.vert)
        vertex.color = color;
}

class MeshRendering : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(target.isValid());
        buildPixelSquare(mesh);
        renderer.setMesh(&mesh);
        renderer.setHints(0);
    }
    void TearDown() override { target.makeCurrent(); }

    QColor at(const Probe& probe) { return target.pixel(probe.x, probe.y); }
    QColor drawAndRead(int drawMode, const Probe& probe, int colorMode = MeshRenderer::COLOR_NONE)
    {
        target.clear();
        renderer.draw(drawMode, colorMode, MeshRenderer::TEXTURE_NONE);
        return at(probe);
    }

    OffscreenTarget target;
    CMeshO mesh;
    MeshRenderer renderer;
};

} // namespace

TEST_F(MeshRendering, FilledModesCoverTheFacesAndNothingElse)
{
    for (int mode : {MeshRenderer::DRAW_SMOOTH, MeshRenderer::DRAW_FLAT}) {
        SCOPED_TRACE(mode);
        target.clear();
        renderer.draw(mode, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
        EXPECT_TRUE(sameColor(RED, at(IN_FACE_0)));
        EXPECT_TRUE(sameColor(RED, at(IN_FACE_1)));
        EXPECT_TRUE(sameColor(BACKGROUND, at(OUTSIDE)));
    }
    target.clear();
    renderer.draw(MeshRenderer::DRAW_NONE, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0)));

    // Deleted faces are not drawn.
    mesh.face[1].setDeleted();
    EXPECT_TRUE(sameColor(BACKGROUND, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_1)));
    EXPECT_TRUE(sameColor(RED, at(IN_FACE_0)));
}

TEST_F(MeshRendering, LineAndPointModesLeaveTheInsideEmpty)
{
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_WIRE, ON_LEFT_EDGE)));
    EXPECT_TRUE(sameColor(RED, at(ON_DIAGONAL)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0)));

    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_HIDDEN, ON_LEFT_EDGE)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_1)));

    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_POINTS, ON_CORNER)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(ON_LEFT_EDGE)));

    // The box has no diagonal.
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_BOX, ON_LEFT_EDGE)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(ON_DIAGONAL)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0)));

    // Filled in the current colour, edges in black.
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_FLAT_WIRE, IN_FACE_0)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(ON_DIAGONAL)));
}

TEST_F(MeshRendering, HiddenModeHidesLinesBehindTheSurface)
{
    // A second square in front (z = 0.5 faces the viewer, who looks down -z) covering the left
    // half: the left edge of the back square is hidden behind it, the right one is not.
    CMeshO front;
    const double low = OffscreenTarget::centre(0);
    qel::test::buildMesh(front,
                         {Point(low, low, 0.5), Point(0.0, low, 0.5), Point(0.0, -low, 0.5), Point(low, -low, 0.5)},
                         {{0, 1, 2}, {0, 2, 3}});
    target.clear();
    glColor3f(0.0f, 0.0f, 1.0f);
    MeshRenderer frontRenderer;
    frontRenderer.setHints(0);
    frontRenderer.setMesh(&front);
    frontRenderer.draw(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    glColor3f(1.0f, 0.0f, 0.0f);
    renderer.draw(MeshRenderer::DRAW_HIDDEN, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    EXPECT_TRUE(sameColor(BLUE, at(ON_LEFT_EDGE)));
    EXPECT_TRUE(sameColor(RED, target.pixel(47, 30)));
}

TEST_F(MeshRendering, ColourModesTakeFaceOrVertexColours)
{
    mesh.face.enableColor();
    mesh.face[0].color() = Color4b::fromRgba(0, 255, 0, 255);
    mesh.face[1].color() = Color4b::fromRgba(0, 0, 255, 255);
    EXPECT_TRUE(sameColor(GREEN, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_FACE)));
    EXPECT_TRUE(sameColor(BLUE, at(IN_FACE_1)));

    setVertexColors(mesh, Color4b::fromRgba(255, 255, 0, 255));
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_FLAT, IN_FACE_1, MeshRenderer::COLOR_PER_VERTEX)));
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_POINTS, ON_CORNER, MeshRenderer::COLOR_PER_VERTEX)));

    // Per mesh means the current colour; per face without the array too.
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_MESH)));
    mesh.face.disableColor();
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_FACE)));
}

TEST_F(MeshRendering, DisplayListIsReusedUntilTheCachedStateIsReset)
{
    renderer.setHints(MeshRenderer::HINT_USE_DISPLAY_LIST);
    setVertexColors(mesh, Color4b::fromRgba(255, 255, 0, 255));
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_VERTEX)));
    const int list = renderer.getDisplayList();
    ASSERT_NE(MeshRenderer::NO_DISPLAY_LIST, list);
    EXPECT_TRUE(glIsList(static_cast<GLuint>(list)));
    EXPECT_EQ(MeshRenderer::DRAW_SMOOTH, renderer.getCachedDrawMode());
    EXPECT_EQ(MeshRenderer::COLOR_PER_VERTEX, renderer.getCachedColorMode());

    // A change of the mesh alone doesn't show: the list is called again.
    setVertexColors(mesh, Color4b::fromRgba(0, 255, 255, 255));
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_VERTEX)));
    EXPECT_EQ(list, renderer.getDisplayList());

    renderer.resetCachedState();
    EXPECT_EQ(0, renderer.getCachedDrawMode());
    EXPECT_EQ(0, renderer.getCachedColorMode());
    EXPECT_TRUE(sameColor(CYAN, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_VERTEX)));

    // Another mode builds a new list.
    EXPECT_TRUE(sameColor(BACKGROUND, drawAndRead(MeshRenderer::DRAW_WIRE, IN_FACE_0, MeshRenderer::COLOR_PER_VERTEX)));
    EXPECT_EQ(MeshRenderer::DRAW_WIRE, renderer.getCachedDrawMode());
    EXPECT_TRUE(sameColor(RED, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_NONE)));
}

TEST_F(MeshRendering, VertexArraysDrawTheSameAsLongAsTheIndicesFit)
{
    renderer.updateIndices();
    EXPECT_TRUE(renderer.getIndices().empty()) << "no vertex array hint, no indices";

    renderer.setHints(MeshRenderer::HINT_USE_VERTEX_ARRAY);
    mesh.face[0].setDeleted();
    renderer.updateIndices();
    EXPECT_EQ((std::vector<unsigned int>{0, 2, 3}), renderer.getIndices());
    setVertexColors(mesh, Color4b::fromRgba(255, 255, 0, 255));
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_1, MeshRenderer::COLOR_PER_VERTEX)));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0)));

    // Stale indices (the vertex vector changed) are not used.
    qel::scene::MeshAllocator::addVertices(mesh, 1);
    mesh.face[0].flags = 0;
    EXPECT_TRUE(sameColor(YELLOW, drawAndRead(MeshRenderer::DRAW_SMOOTH, IN_FACE_0, MeshRenderer::COLOR_PER_VERTEX)));
}

namespace {

// Mesh models render through the shared context of the viewer, founded here by the test's
// own context.
class MeshModelRendering : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(target.isValid());
        qel::gui::SharedContext* shared = qel::scene::_GlobalContext();
        if (!shared->hasContext()) {
            shared->lock();
            shared->setContext(target.glContext());
            shared->unlock();
            target.makeCurrent();
        }
        model.reset(new MeshModel);
        buildPixelSquare(model->cm);
        target.clear();
    }
    void TearDown() override { target.makeCurrent(); }

    QColor at(const Probe& probe) { return target.pixel(probe.x, probe.y); }

    OffscreenTarget target;
    std::unique_ptr<MeshModel> model;
};

} // namespace

TEST_F(MeshModelRendering, RenderAppliesTheMeshMatrixAndFallsBackToUsableModes)
{
    model->cm.Tr = CMeshO::Matrix::translation(-0.5, 0.0, 0.0);
    EXPECT_TRUE(model->Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_PER_FACE, MeshRenderer::TEXTURE_PER_WEDGE));
    EXPECT_EQ(qel::scene::_GlobalGLFunctions(), model->glw->getGLFunctions());
    EXPECT_NE(nullptr, model->glw->getGLFunctions());
    EXPECT_TRUE(sameColor(RED, target.pixel(IN_FACE_1.x - 16, IN_FACE_1.y))) << "per face without colours: current";
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0))) << "moved left by a quarter of the view";
}

TEST_F(MeshModelRendering, SelectedFacesAreOverlaidTranslucentAndCounted)
{
    model->cm.face[0].setFlag(CFaceO::SELECTED);
    model->cm.face[1].setFlag(CFaceO::SELECTED);
    model->cm.face[1].setDeleted();
    EXPECT_TRUE(model->RenderSelectedFaces());
    EXPECT_EQ(1, model->cm.sfn);
    // 30 % red over black; the alpha channel is blended too, so read the premultiplied value.
    const QRgb overlay = qPremultiply(at(IN_FACE_0).rgba());
    EXPECT_NEAR(77, qRed(overlay), 1);
    EXPECT_EQ(0, qGreen(overlay));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_1)));
}

TEST_F(MeshModelRendering, DroppedVariableMeshStaysOnShowUntilTheCacheIsReset)
{
    model->glw->addHints(MeshRenderer::HINT_USE_DISPLAY_LIST);
    CMeshO* variable = new CMeshO;
    buildPixelSquare(*variable);
    variable->face[0].setDeleted();
    model->replaceVariableMesh(variable, true);
    model->toggleMesh(MeshModel::MODEL_VARIABLE);
    EXPECT_TRUE(model->Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE));
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0)));

    model->deleteVariableRenderedMesh();
    target.clear();
    model->Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    EXPECT_TRUE(sameColor(BACKGROUND, at(IN_FACE_0))) << "the variable mesh's list is still called";

    model->toggleMesh(MeshModel::MODEL_ORIGINAL);
    target.clear();
    model->Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    EXPECT_TRUE(sameColor(RED, at(IN_FACE_0)));
}

TEST_F(MeshModelRendering, TheDisplayListDiesWithTheModel)
{
    model->glw->addHints(MeshRenderer::HINT_USE_DISPLAY_LIST);
    model->Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, MeshRenderer::TEXTURE_NONE);
    const GLuint list = static_cast<GLuint>(model->glw->getDisplayList());
    ASSERT_TRUE(glIsList(list));
    model.reset();
    target.makeCurrent();
    EXPECT_FALSE(glIsList(list)) << "deleted in the shared context, gone from the whole share group";
}
