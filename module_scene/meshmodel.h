#pragma once

#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/loadmask.h"

#include <QMutex>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

class MeshRenderer;

// The triangle data of one model: the original mesh, an optional variable mesh shown in its
// place, the renderer that draws whichever is active, the optional data switched on and a
// stash of vertex colours. May be built and filled on any thread; GL work happens on the
// application thread.
//
// Locks: renderMutex before meshMutex, both recursive. meshMutex guards busy, variableMesh
// and which mesh is active; renderMutex is held while the variable mesh is drawn or replaced.
// Drawing the original mesh takes neither.
class MeshModel : public LoadMask
{
public:
    enum ModelType { MODEL_ORIGINAL = 0, MODEL_VARIABLE = 1 };

    enum DataMask {
        DataMaskBorderFlags = 1,
        DataMaskFaceAdjacency = 2,
        DataMaskWedgeTexCoords = 4,
        DataMaskFaceColor = 8,
        DataMaskFaceMark = 16,
        DataMaskVertexFaceAdjacency = 32
    };

    MeshModel();
    // The renderer dies on the application thread with the shared context current: it owns a
    // display list.
    virtual ~MeshModel();
    MeshModel(const MeshModel&) = delete;
    MeshModel& operator=(const MeshModel&) = delete;

    // Draws the active mesh under its Tr; false when there is none. Per-face colours and wedge
    // textures fall back to none when the mesh lacks their arrays.
    bool Render(int drawMode, int colorMode, int textureMode);
    // The live faces flagged SELECTED, translucent red over the surface; counts them in sfn.
    bool RenderSelectedFaces();

    // Switches on what a load mask says the file delivered: wedge texture coordinates, then
    // face colours.
    void Enable(int openingFileMask);
    // Builds each asked-for part that is not in dataMask yet, on the active mesh.
    void updateDataMask(int bits);
    // Forgets the bits only; arrays stay enabled, so a later update computes them again.
    void clearDataMask(int bits);

    // Makes the original or the variable mesh (possibly null) active and resets the
    // renderer's cached state; other values change nothing but the cache.
    void toggleMesh(ModelType type);
    bool isOriginalMeshActive() const { return modelType == MODEL_ORIGINAL; }
    bool isVariableMeshActive() const { return modelType == MODEL_VARIABLE; }
    // Without deleteOld the former variable mesh passes to the caller.
    void replaceVariableMesh(CMeshO* mesh, bool deleteOld);
    // Drops the variable mesh and activates the original. The renderer's cache is left alone
    // on purpose: the list built from the variable mesh stays on show until reset.
    void deleteVariableRenderedMesh();

    // Copies the colours of all vertices of the active mesh, deleted ones included.
    void storeVertexColor();
    // Writes them back if the active mesh still has as many vertices; the stash stays.
    void restoreVertexColor();

    // The mesh the renderer points at (null when the variable mesh is active but absent).
    CMeshO* activeMesh() const;

    CMeshO cm;
    CMeshO* variableMesh = nullptr;
    QMutex meshMutex{QMutex::Recursive};
    MeshRenderer* glw;
    bool busy = true;
    bool visible = true;
    int drawMode = 0;
    ModelType modelType = MODEL_ORIGINAL;
    QMutex renderMutex{QMutex::Recursive};
    std::vector<std::uint32_t> storedColors;
    int dataMask = 0;

private:
    bool wants(int bits, int bit) const { return (bits & bit) != 0 && (dataMask & bit) == 0; }
    void updateFaceAdjacency(CMeshO& mesh);
    void updateVertexFaceAdjacency(CMeshO& mesh);
    void updateBorderFlags(CMeshO& mesh);
    void updateWedgeTexCoords(CMeshO& mesh);
    void deleteTriMesh();
};

} // namespace scene
} // namespace qel
