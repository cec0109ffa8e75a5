#include "meshfixtures.h"
#include "module_scene/mesh/meshrenderer.h"
#include "module_scene/meshmodel.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>

using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::Color4b;
using qel::scene::CVertexO;
using qel::scene::MeshModel;
using qel::scene::MeshRenderer;
using namespace qel::test;

namespace {

// Waits until another thread holds the mutex; false if that doesn't happen within seconds.
bool heldElsewhere(QMutex& mutex)
{
    for (int attempt = 0; attempt < 10000; ++attempt) {
        if (!mutex.tryLock())
            return true;
        mutex.unlock();
        QThread::msleep(1);
    }
    return false;
}

void runWhileProcessingEvents(QThread* thread)
{
    thread->start();
    while (!thread->isFinished())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    thread->wait();
    delete thread;
}

} // namespace

TEST(MeshModel, StartsBusyAndVisibleWithTheOriginalMeshActive)
{
    MeshModel model;
    EXPECT_TRUE(model.busy);
    EXPECT_TRUE(model.visible);
    EXPECT_EQ(0, model.dataMask);
    EXPECT_EQ(0, model.drawMode);
    EXPECT_TRUE(model.isOriginalMeshActive());
    EXPECT_EQ(&model.cm, model.glw->getMesh());
    EXPECT_EQ(4096, model.glw->getHints());
    EXPECT_EQ(MeshRenderer::NO_DISPLAY_LIST, model.glw->getDisplayList());
    EXPECT_TRUE(model.cm.bbox.isEmpty());
    EXPECT_TRUE(model.cm.Tr.isIdentity());
}

TEST(MeshModel, DataMaskBuildsEachPartOnceUntilItsBitIsCleared)
{
    MeshModel model;
    buildOpenStrip(model.cm);
    model.updateDataMask(MeshModel::DataMaskFaceAdjacency | MeshModel::DataMaskBorderFlags
                         | MeshModel::DataMaskVertexFaceAdjacency);
    EXPECT_EQ(1 | 2 | 32, model.dataMask);
    EXPECT_TRUE(model.cm.face.isFaceFaceEnabled());
    EXPECT_TRUE(model.cm.face.isVertexFaceEnabled());
    EXPECT_EQ(&model.cm.face[1], model.cm.face[0].faceFaceLinks().face[1]);
    EXPECT_EQ(&model.cm.face[2], model.cm.vert[4].vfFace);
    EXPECT_TRUE(model.cm.face[0].isBorder(0));
    EXPECT_FALSE(model.cm.face[0].isBorder(1));

    // Asked again, a bit already set does nothing.
    model.cm.face[0].clearFlag(CFaceO::BORDER_EDGE_0);
    model.updateDataMask(MeshModel::DataMaskBorderFlags);
    EXPECT_FALSE(model.cm.face[0].isBorder(0));

    // Clearing forgets the bit only: the array stays, and the next update computes again.
    model.clearDataMask(MeshModel::DataMaskBorderFlags | MeshModel::DataMaskFaceAdjacency);
    EXPECT_EQ(32, model.dataMask);
    EXPECT_TRUE(model.cm.face.isFaceFaceEnabled());
    model.updateDataMask(MeshModel::DataMaskBorderFlags);
    EXPECT_TRUE(model.cm.face[0].isBorder(0)) << "found from the edge list this time";
    EXPECT_EQ(1 | 32, model.dataMask);
}

TEST(MeshModel, OptionalArraysAndTheLoadMask)
{
    MeshModel model;
    buildSquare(model.cm);
    model.Enable(MeshModel::VERTEX_NORMAL | MeshModel::VERTEX_COLOR);
    EXPECT_EQ(0, model.dataMask) << "only wedge texture and face colour bits are read";

    model.Enable(MeshModel::FACE_COLOR | MeshModel::WEDGE_TEXCOORD);
    EXPECT_EQ(4 | 8, model.dataMask);
    ASSERT_TRUE(model.cm.face.isWedgeTexCoordEnabled());
    ASSERT_EQ(2u, model.cm.face.wedgeTexCoords().size());
    for (const auto& wedge : model.cm.face.wedgeTexCoords()) {
        for (const auto& corner : wedge.corner) {
            EXPECT_EQ(0.5f, corner.u);
            EXPECT_EQ(0.5f, corner.v);
            EXPECT_EQ(-1, corner.n);
        }
    }
    EXPECT_EQ(2u, model.cm.face.colors().size());

    model.updateDataMask(MeshModel::DataMaskFaceMark);
    EXPECT_EQ(4 | 8 | 16, model.dataMask);
    EXPECT_EQ(2u, model.cm.face.marks().size());
}

TEST(MeshModel, SwitchingBetweenOriginalAndVariableMesh)
{
    MeshModel model;
    buildSquare(model.cm);

    model.toggleMesh(MeshModel::MODEL_VARIABLE);
    EXPECT_TRUE(model.isVariableMeshActive());
    EXPECT_EQ(nullptr, model.activeMesh());
    EXPECT_FALSE(model.Render(MeshRenderer::DRAW_SMOOTH, MeshRenderer::COLOR_NONE, 0))
        << "an absent variable mesh draws nothing";
    model.updateDataMask(MeshModel::DataMaskFaceColor);
    EXPECT_EQ(0, model.dataMask) << "no active mesh, nothing switched on";

    // The renderer follows a replacement only while it shows the variable mesh.
    CMeshO* first = new CMeshO;
    model.replaceVariableMesh(first, true);
    EXPECT_EQ(first, model.activeMesh());
    model.toggleMesh(MeshModel::MODEL_ORIGINAL);
    CMeshO* second = new CMeshO;
    model.replaceVariableMesh(second, false);
    std::unique_ptr<CMeshO> handedBack(first);
    EXPECT_EQ(&model.cm, model.activeMesh());
    EXPECT_EQ(second, model.variableMesh);

    model.toggleMesh(static_cast<MeshModel::ModelType>(7));
    EXPECT_TRUE(model.isOriginalMeshActive());
    EXPECT_EQ(&model.cm, model.activeMesh());

    model.toggleMesh(MeshModel::MODEL_VARIABLE);
    model.deleteVariableRenderedMesh();
    EXPECT_EQ(nullptr, model.variableMesh);
    EXPECT_TRUE(model.isOriginalMeshActive());
    EXPECT_EQ(&model.cm, model.activeMesh());
    model.deleteVariableRenderedMesh();
    EXPECT_TRUE(model.isOriginalMeshActive());
}

TEST(MeshModel, ColourStashRestoresOnlyOntoAMeshOfTheSameSize)
{
    MeshModel model;
    model.restoreVertexColor();
    buildSquare(model.cm);
    model.cm.vert[1].color = Color4b::fromRgba(10, 20, 30, 40);
    model.cm.vert[3].setDeleted();
    model.cm.vert[3].color = Color4b::fromRgba(1, 2, 3, 4);
    model.restoreVertexColor();
    EXPECT_EQ(Color4b::fromRgba(10, 20, 30, 40), model.cm.vert[1].color) << "an empty stash restores nothing";

    model.storeVertexColor();
    ASSERT_EQ(4u, model.storedColors.size()) << "deleted vertices included";
    for (CVertexO& vertex : model.cm.vert)
        vertex.color = Color4b::fromRgba(0, 0, 0, 0);
    model.restoreVertexColor();
    EXPECT_EQ(Color4b::fromRgba(10, 20, 30, 40), model.cm.vert[1].color);
    EXPECT_EQ(Color4b::fromRgba(1, 2, 3, 4), model.cm.vert[3].color);
    EXPECT_EQ(Color4b::white(), model.cm.vert[0].color);
    EXPECT_EQ(4u, model.storedColors.size()) << "the stash stays filled";

    // After the vertex count changed the stash no longer fits.
    model.cm.vert.pop_back();
    model.cm.vert[1].color = Color4b::fromRgba(0, 0, 0, 0);
    model.restoreVertexColor();
    EXPECT_EQ(Color4b::fromRgba(0, 0, 0, 0), model.cm.vert[1].color);

    // The stash is taken from the active mesh.
    CMeshO* variable = new CMeshO;
    buildTetrahedron(*variable);
    model.replaceVariableMesh(variable, true);
    model.toggleMesh(MeshModel::MODEL_VARIABLE);
    model.storeVertexColor();
    EXPECT_EQ(4u, model.storedColors.size());
    variable->vert[2].color = Color4b::fromRgba(5, 5, 5, 5);
    model.restoreVertexColor();
    EXPECT_EQ(Color4b::white(), variable->vert[2].color);
}

// The render mutex comes first: a replacement takes it while the mesh mutex is held
// elsewhere, and then waits for the mesh mutex.
TEST(MeshModel, RenderMutexIsTakenBeforeMeshMutex)
{
    MeshModel model;
    CMeshO* replacement = new CMeshO;

    model.meshMutex.lock();
    QThread* replacing = QThread::create([&model, replacement]() { model.replaceVariableMesh(replacement, true); });
    replacing->start();
    ASSERT_TRUE(heldElsewhere(model.renderMutex));
    EXPECT_EQ(nullptr, model.variableMesh) << "waiting for the mesh mutex";
    model.meshMutex.unlock();
    replacing->wait();
    delete replacing;
    EXPECT_EQ(replacement, model.variableMesh);

    model.meshMutex.lock();
    QThread* deleting = QThread::create([&model]() { model.deleteVariableRenderedMesh(); });
    deleting->start();
    ASSERT_TRUE(heldElsewhere(model.renderMutex));
    EXPECT_EQ(replacement, model.variableMesh);
    model.meshMutex.unlock();
    deleting->wait();
    delete deleting;
    EXPECT_EQ(nullptr, model.variableMesh);
}

TEST(MeshModel, BuiltFilledAndDestroyedOnAWorkerThread)
{
    std::atomic<int> liveFaces{-1};
    runWhileProcessingEvents(QThread::create([&liveFaces]() {
        MeshModel* model = new MeshModel;
        buildCube(model->cm);
        model->variableMesh = new CMeshO;
        model->updateDataMask(MeshModel::DataMaskFaceAdjacency);
        liveFaces = model->cm.fn;
        // The renderer goes on the application thread; this waits for it.
        delete model;
    }));
    EXPECT_EQ(12, liveFaces.load());
}
