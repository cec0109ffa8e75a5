#pragma once

#include "kernel/math/matrix.h"

namespace qel {
namespace scene {

class CMeshO;

// Moves the geometry of a mesh by a matrix.
class MeshTransform
{
public:
    typedef math::Matrix<double, 4, 4> Matrix;

    // Each live vertex is multiplied as a point and divided by the resulting w unless that is
    // 0. Normals of live vertices and faces are multiplied by the upper 3 x 3 part over the
    // cube root of its determinant, so that a rotation with uniform scale keeps their length
    // and a pure translation leaves them bit for bit. The box is left for MeshBounds.
    static void apply(CMeshO& mesh, const Matrix& matrix);

private:
    MeshTransform() = delete;
};

} // namespace scene
} // namespace qel
