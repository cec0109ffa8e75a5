#include "module_scene/mesh/meshtransform.h"

#include "module_scene/mesh/cmesho.h"

#include <cmath>

namespace qel {
namespace scene {

namespace {

typedef math::Vector<double, 3> Point;

Point transformPoint(const MeshTransform::Matrix& m, const Point& p)
{
    double result[4];
    for (int row = 0; row < 4; ++row)
        result[row] = m(row, 0) * p.x() + m(row, 1) * p.y() + m(row, 2) * p.z() + m(row, 3);
    if (result[3] == 0.0)
        return Point(result[0], result[1], result[2]);
    return Point(result[0] / result[3], result[1] / result[3], result[2] / result[3]);
}

// The upper 3 x 3 part of m over the cube root of its determinant (as it is for determinant 0).
struct NormalMatrix
{
    double values[3][3];

    explicit NormalMatrix(const MeshTransform::Matrix& m)
    {
        const double determinant = m(0, 0) * (m(1, 1) * m(2, 2) - m(1, 2) * m(2, 1))
                                   - m(0, 1) * (m(1, 0) * m(2, 2) - m(1, 2) * m(2, 0))
                                   + m(0, 2) * (m(1, 0) * m(2, 1) - m(1, 1) * m(2, 0));
        const double scale = determinant == 0.0 ? 1.0 : std::cbrt(determinant);
        for (int row = 0; row < 3; ++row) {
            for (int col = 0; col < 3; ++col)
                values[row][col] = m(row, col) / scale;
        }
    }

    bool isIdentity() const
    {
        for (int row = 0; row < 3; ++row) {
            for (int col = 0; col < 3; ++col) {
                if (values[row][col] != (row == col ? 1.0 : 0.0))
                    return false;
            }
        }
        return true;
    }

    Point operator*(const Point& n) const
    {
        Point result;
        for (int row = 0; row < 3; ++row)
            result[row] = values[row][0] * n.x() + values[row][1] * n.y() + values[row][2] * n.z();
        return result;
    }
};

} // namespace

void MeshTransform::apply(CMeshO& mesh, const Matrix& matrix)
{
    const NormalMatrix normalMatrix(matrix);
    // A move leaves the normals as they are; a large mesh is spared touching them.
    const bool normalsChange = !normalMatrix.isIdentity();
    for (CVertexO& vertex : mesh.vert) {
        if (vertex.isDeleted())
            continue;
        vertex.coord = transformPoint(matrix, vertex.coord);
        if (normalsChange)
            vertex.normal = normalMatrix * vertex.normal;
    }
    if (!normalsChange)
        return;
    for (CFaceO& face : mesh.face) {
        if (!face.isDeleted())
            face.normal = normalMatrix * face.normal;
    }
}

} // namespace scene
} // namespace qel
