#include "module_scene/meshmodel.h"

#include "kernel/main/overseer.h"
#include "kernel/util/delegate0.h"
#include "kernel/util/workerdelegate.h"
#include "module_scene/gui/sharedcontext.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/mesh/meshborderflags.h"
#include "module_scene/mesh/meshrenderer.h"
#include "module_scene/mesh/meshtopology.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QThread>
#include <qopengl.h>

namespace qel {
namespace scene {

namespace {

bool onApplicationThread()
{
    if (!QCoreApplication::instance())
        return true;
    main::Overseer* overseer = main::Overseer::getInstance();
    QThread* applicationThread = overseer ? overseer->getApplicationThread() : nullptr;
    return !applicationThread || QThread::currentThread() == applicationThread;
}

int usableColorMode(const CMeshO& mesh, int colorMode)
{
    if (colorMode == MeshRenderer::COLOR_PER_FACE && !mesh.face.isColorEnabled())
        return MeshRenderer::COLOR_NONE;
    return colorMode;
}

int usableTextureMode(const CMeshO& mesh, int textureMode)
{
    const bool wedgeMode =
        textureMode == MeshRenderer::TEXTURE_PER_WEDGE || textureMode == MeshRenderer::TEXTURE_PER_WEDGE_MULTI;
    if (wedgeMode && !mesh.face.isWedgeTexCoordEnabled())
        return MeshRenderer::TEXTURE_NONE;
    return textureMode;
}

} // namespace

MeshModel::MeshModel() : glw(new MeshRenderer)
{
    glw->setMesh(&cm);
}

MeshModel::~MeshModel()
{
    delete variableMesh;
    variableMesh = nullptr;
    deleteTriMesh();
}

// Without an application object there are no GL contexts of the module, and no viewer is
// made just to find that out (command-line tools load meshes without one).
void MeshModel::deleteTriMesh()
{
    if (!onApplicationThread()) {
        util::WorkerDelegate::invokeSync(new util::Delegate0<MeshModel>(this, &MeshModel::deleteTriMesh));
        return;
    }
    if (!QCoreApplication::instance()) {
        delete glw;
        glw = nullptr;
        return;
    }
    gui::SharedContext* context = _GlobalContext();
    context->makeCurrent();
    delete glw;
    glw = nullptr;
    context->doneCurrent();
}

CMeshO* MeshModel::activeMesh() const
{
    return glw ? glw->getMesh() : nullptr;
}

bool MeshModel::Render(int drawMode, int colorMode, int textureMode)
{
    CMeshO* mesh = activeMesh();
    if (!mesh)
        return false;
    if (!glw->getGLFunctions())
        glw->setGLFunctions(_GlobalGLFunctions());
    glPushMatrix();
    glMultMatrixd(mesh->Tr.data());
    colorMode = usableColorMode(*mesh, colorMode);
    textureMode = usableTextureMode(*mesh, textureMode);
    if (mesh == variableMesh) {
        QMutexLocker locker(&renderMutex);
        glw->draw(drawMode, colorMode, textureMode);
    } else {
        glw->draw(drawMode, colorMode, textureMode);
    }
    glPopMatrix();
    return true;
}

bool MeshModel::RenderSelectedFaces()
{
    CMeshO* mesh = activeMesh();
    if (!mesh)
        return false;
    MeshRenderer::pushSelectionState(0.3f, -1.0f);
    glMultMatrixd(mesh->Tr.data());
    glBegin(GL_TRIANGLES);
    mesh->sfn = 0;
    for (const CFaceO& face : mesh->face) {
        if (face.isDeleted() || !face.hasFlag(CFaceO::SELECTED) || !face.hasCorners())
            continue;
        for (int corner = 0; corner < 3; ++corner)
            glVertex3dv(face.v[corner]->coord.data());
        ++mesh->sfn;
    }
    glEnd();
    MeshRenderer::popSelectionState();
    return true;
}

void MeshModel::Enable(int openingFileMask)
{
    if (openingFileMask & WEDGE_TEXCOORD)
        updateDataMask(DataMaskWedgeTexCoords);
    if (openingFileMask & FACE_COLOR)
        updateDataMask(DataMaskFaceColor);
}

void MeshModel::updateDataMask(int bits)
{
    CMeshO* mesh = activeMesh();
    if (!mesh)
        return;
    if (wants(bits, DataMaskFaceAdjacency))
        updateFaceAdjacency(*mesh);
    if (wants(bits, DataMaskVertexFaceAdjacency))
        updateVertexFaceAdjacency(*mesh);
    if (wants(bits, DataMaskBorderFlags))
        updateBorderFlags(*mesh);
    if (wants(bits, DataMaskWedgeTexCoords))
        updateWedgeTexCoords(*mesh);
    if (wants(bits, DataMaskFaceColor)) {
        mesh->face.enableColor();
        dataMask |= DataMaskFaceColor;
    }
    if (wants(bits, DataMaskFaceMark)) {
        mesh->face.enableMark();
        dataMask |= DataMaskFaceMark;
    }
}

void MeshModel::updateFaceAdjacency(CMeshO& mesh)
{
    mesh.face.enableFaceFace();
    dataMask |= DataMaskFaceAdjacency;
    MeshTopology::buildFaceFace(mesh);
}

void MeshModel::updateVertexFaceAdjacency(CMeshO& mesh)
{
    mesh.face.enableVertexFace();
    dataMask |= DataMaskVertexFaceAdjacency;
    MeshTopology::buildVertexFace(mesh);
}

void MeshModel::updateBorderFlags(CMeshO& mesh)
{
    if (dataMask & DataMaskFaceAdjacency)
        MeshBorderFlags::fromFaceFace(mesh);
    else
        MeshBorderFlags::fromEdgeList(mesh);
    dataMask |= DataMaskBorderFlags;
}

void MeshModel::updateWedgeTexCoords(CMeshO& mesh)
{
    mesh.face.enableWedgeTexCoord();
    std::vector<WedgeTexCoords>& wedges = mesh.face.wedgeTexCoords();
    std::fill(wedges.begin(), wedges.end(), WedgeTexCoords());
    dataMask |= DataMaskWedgeTexCoords;
}

void MeshModel::clearDataMask(int bits)
{
    dataMask &= ~bits;
}

void MeshModel::toggleMesh(ModelType type)
{
    if (type == MODEL_ORIGINAL) {
        glw->setMesh(&cm);
        modelType = MODEL_ORIGINAL;
    } else if (type == MODEL_VARIABLE) {
        glw->setMesh(variableMesh);
        modelType = MODEL_VARIABLE;
    }
    glw->resetCachedState();
}

void MeshModel::replaceVariableMesh(CMeshO* mesh, bool deleteOld)
{
    QMutexLocker renderLocker(&renderMutex);
    QMutexLocker meshLocker(&meshMutex);
    CMeshO* oldMesh = variableMesh;
    if (deleteOld)
        delete variableMesh;
    if (glw->getMesh() == oldMesh) {
        glw->resetCachedState();
        glw->setMesh(mesh);
    }
    variableMesh = mesh;
}

void MeshModel::deleteVariableRenderedMesh()
{
    QMutexLocker renderLocker(&renderMutex);
    QMutexLocker meshLocker(&meshMutex);
    if (!variableMesh)
        return;
    delete variableMesh;
    variableMesh = nullptr;
    modelType = MODEL_ORIGINAL;
    glw->setMesh(&cm);
}

void MeshModel::storeVertexColor()
{
    const CMeshO* mesh = activeMesh();
    if (!mesh)
        return;
    storedColors.resize(mesh->vert.size());
    for (std::size_t place = 0; place < mesh->vert.size(); ++place)
        storedColors[place] = mesh->vert[place].color.toWord();
}

void MeshModel::restoreVertexColor()
{
    CMeshO* mesh = activeMesh();
    if (!mesh || storedColors.empty() || storedColors.size() != mesh->vert.size())
        return;
    for (std::size_t place = 0; place < mesh->vert.size(); ++place)
        mesh->vert[place].color = Color4b::fromWord(storedColors[place]);
}

} // namespace scene
} // namespace qel
