#pragma once

#include "kernel/math/matrix.h"
#include "module_scene/mesh/box3d.h"
#include "module_scene/mesh/cfaceo.h"
#include "module_scene/mesh/cvertexo.h"
#include "module_scene/mesh/facevector.h"

#include <vector>

namespace qel {
namespace scene {

// A triangle mesh: vertices and faces in contiguous storage, deleted entries flagged until
// compaction. vn and fn count the live entries. The faces point into the vertex vector and
// the vertices and adjacency arrays point into the face vector, so a mesh is neither copied
// nor moved; MeshAllocator copies one into another.
class CMeshO
{
public:
    typedef std::vector<CVertexO> VertexVector;
    typedef math::Matrix<double, 4, 4> Matrix;

    CMeshO() = default;
    CMeshO(const CMeshO&) = delete;
    CMeshO& operator=(const CMeshO&) = delete;

    // Drops all vertices and faces (optional arrays stay enabled, empty), empties the box.
    void clear();

    VertexVector vert;
    int vn = 0;
    FaceVector face;
    int fn = 0;
    Box3d bbox;
    // Faces drawn by MeshModel::RenderSelectedFaces in its last run.
    int sfn = 0;
    Matrix Tr = Matrix::identity();
};

} // namespace scene
} // namespace qel
