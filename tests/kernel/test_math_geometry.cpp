#include "kernel/math/box4.h"
#include "kernel/math/matrix.h"
#include "kernel/math/plane.h"
#include "kernel/math/quaternion.h"
#include "kernel/math/vector.h"
#include "support/logcapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using qel::math::Box4;
using qel::math::Matrix;
using qel::math::Plane;
using qel::math::Quaternion;
using qel::math::Vector;

typedef Matrix<double, 4, 4> Matrix4;
typedef Vector<double, 3> Vector3;
typedef Vector<double, 4> Vector4;
typedef Quaternion<double> Quat;

namespace {

const double pi = 3.14159265358979323846;

void expectNear(const Matrix4& expected, const Matrix4& actual, double tolerance)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], actual[i], tolerance) << "index " << i;
}

void expectNear(const Vector4& expected, const Vector4& actual, double tolerance)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(expected[i], actual[i], tolerance) << "component " << i;
}

// A rotation matrix in the usual column-vector sense: turns by angle about z.
Matrix4 turnAboutZ(double angle)
{
    return Matrix4::fromRows({std::cos(angle), -std::sin(angle), 0, 0, std::sin(angle), std::cos(angle), 0, 0,
                              0, 0, 1, 0, 0, 0, 0, 1});
}

} // namespace

TEST(MathQuaternion, MatrixRoundTripCoversAllPivots)
{
    // Half turns put the largest candidate on b, c and d.
    const Matrix4 halfTurnX = Matrix4::scaling(1, -1, -1);
    const Matrix4 halfTurnY = Matrix4::scaling(-1, 1, -1);
    const Matrix4 halfTurnZ = Matrix4::scaling(-1, -1, 1);
    EXPECT_EQ(Quat(1, 0, 0, 0), Quat::fromMatrix(halfTurnX));
    EXPECT_EQ(Quat(0, 1, 0, 0), Quat::fromMatrix(halfTurnY));
    EXPECT_EQ(Quat(0, 0, 1, 0), Quat::fromMatrix(halfTurnZ));
    // b and c tie for a half turn about (1,1,0): the first one wins.
    const Matrix4 halfTurnXY = Matrix4::fromRows({0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1});
    const Quat diagonal = Quat::fromMatrix(halfTurnXY);
    EXPECT_DOUBLE_EQ(std::sqrt(0.5), diagonal.x());
    EXPECT_DOUBLE_EQ(std::sqrt(0.5), diagonal.y());

    for (const Matrix4& rotation :
         {Matrix4::identity(), halfTurnX, halfTurnY, halfTurnZ, halfTurnXY, turnAboutZ(0.3), turnAboutZ(pi / 2)})
        expectNear(rotation, Quat::fromMatrix(rotation).toMatrix(), 1e-15);

    std::mt19937 generator(42);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3 axis(value(generator), value(generator), value(generator));
        const Matrix4 rotation = Quat::fromAxisAngle(axis, pi * value(generator)).toMatrix();
        expectNear(rotation, Quat::fromMatrix(rotation).toMatrix(), 1e-14);
    }

    // The translation is not part of the rotation.
    const Matrix4 placed = Matrix4::translation(4, 5, 6) * turnAboutZ(1.0);
    expectNear(turnAboutZ(1.0), Quat::fromMatrix(placed).toMatrix(), 1e-15);
}

TEST(MathQuaternion, MatrixIsTheTransposedRotation)
{
    EXPECT_EQ(Matrix4::identity(), Quat().toMatrix());
    EXPECT_EQ(Matrix4::identity(), Quat(0, 0, 0, 3).toMatrix()); // not unit: normalised by n

    // Axis z, a quarter turn: x goes to -y in the column-vector reading.
    const Matrix4 m = Quat::fromAxisAngle(Vector3(0, 0, 5), pi / 2).toMatrix();
    expectNear(Vector4(0, -1, 0, 0), m * Vector4(1, 0, 0, 0), 1e-15);
    expectNear(turnAboutZ(-pi / 2), m, 1e-15);
    expectNear(Vector4(0, 1, 0, 0), m.getTranspose() * Vector4(1, 0, 0, 0), 1e-15);

    // A four-component axis uses its first three components.
    EXPECT_EQ(Quat::fromAxisAngle(Vector3(0, 0, 1), 0.5), Quat::fromAxisAngle(Vector4(0, 0, 1, 1), 0.5));
    const Quat zeroAxis = Quat::fromAxisAngle(Vector3(), pi);
    EXPECT_EQ(0.0, zeroAxis.x());
    EXPECT_NEAR(0.0, zeroAxis.w(), 1e-16);
}

TEST(MathQuaternion, ProductAndInverse)
{
    // The product composes matrices in reverse order (transposed convention).
    const Quat p = Quat::fromAxisAngle(Vector3(1, 2, 3), 0.7);
    const Quat q = Quat::fromAxisAngle(Vector3(-1, 0, 2), 1.9);
    expectNear(q.toMatrix() * p.toMatrix(), (p * q).toMatrix(), 1e-14);

    // Small products and the dot product snap.
    EXPECT_EQ(Quat(0, 0, 0, 1), Quat(1e-13, 0, 0, 1) * Quat(0, 0, 0, 1));
    EXPECT_EQ(Quat(2e-7, 0, 0, 1), Quat(1e-7, 0, 0, 1) * Quat(1e-7, 0, 0, 1));

    EXPECT_EQ(Quat(-1, 0, 0, 0), Quat(1, 0, 0, 0).getInverse());
    EXPECT_EQ(Quat(0, -0.5, 0, 0.5), Quat(0, 1, 0, 1).getInverse().getInverse().getInverse());
    EXPECT_EQ(Quat(0, 0, 0, 1), Quat(1e-13, 0, 0, 1).getInverse());

    // Without a usable norm there is no inverse: the failure is raised, not handed on as NaN.
    for (const Quat& degenerate : {Quat(), Quat(1e-170, 0, 0, 0), Quat(std::nan(""), 0, 0, 1),
                                   Quat(0, std::numeric_limits<double>::infinity(), 0, 1)}) {
        try {
            degenerate.getInverse();
            ADD_FAILURE() << "no exception for (" << degenerate.x() << ", " << degenerate.y() << ", "
                          << degenerate.z() << ", " << degenerate.w() << ")";
        } catch (const qel::Exception& e) {
            EXPECT_EQ("kernel/math/quaternion", e.getFile());
            EXPECT_EQ("qel::math::Quaternion<double>::getInverse", e.getFunction());
            EXPECT_TRUE(e.getMessage().contains("Can't build inverse")) << e.getMessage().toStdString();
        }
    }

    std::mt19937 generator(7);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int trial = 0; trial < 100; ++trial) {
        const Quat r = Quat::fromAxisAngle(Vector3(value(generator), value(generator), value(generator)),
                                           pi * value(generator));
        const Quat one = r * r.getInverse();
        EXPECT_EQ(0.0, one.x());
        EXPECT_EQ(0.0, one.y());
        EXPECT_EQ(0.0, one.z());
        EXPECT_NEAR(1.0, one.w(), 1e-15);
    }
}

TEST(MathQuaternion, AbsoluteRotationAboutThePosition)
{
    // Current transform T*R; the move (R^-1 * M) * R with M the matrix of
    // inverse(quat(R)) * q must end at T * matrix(q): the old turn replaced.
    const Matrix4 rotation = Quat::fromAxisAngle(Vector3(0.3, -1, 0.2), 2.1).toMatrix();
    const Matrix4 current = Matrix4::translation(1, 2, 3) * rotation;
    const Matrix4 r = Quat::fromMatrix(current).toMatrix();
    const Quat wanted = Quat::fromAxisAngle(Vector3(1, 1, 0), 0.4);
    const Matrix4 move = (Quat::fromMatrix(current).getInverse() * wanted).toMatrix();

    Matrix4 future = current;
    future *= (r.getInverse() * move) * r;
    expectNear(Matrix4::translation(1, 2, 3) * wanted.toMatrix(), future, 1e-14);
}

TEST(MathBox, LayoutOfTheCorners)
{
    const Box4<double> empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(Vector4(), empty.size);
    EXPECT_EQ(Vector4(), empty.corners[7]);

    const Box4<double> cube(2.0);
    EXPECT_FALSE(cube.isEmpty());
    EXPECT_EQ(Vector4(0, 0, 0, 1), cube.center);
    EXPECT_EQ(Vector4(2, 2, 2, 0), cube.size);
    const Vector4 expected[8] = {{1, 1, 1, 1},    {1, -1, 1, 1}, {-1, -1, 1, 1}, {-1, 1, 1, 1},
                                 {-1, -1, -1, 1}, {-1, 1, -1, 1}, {1, 1, -1, 1}, {1, -1, -1, 1}};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(expected[i], cube.corners[i]) << "corner " << i;
        const Vector4 opposite = cube.corners[(i + 4) % 8];
        EXPECT_EQ(Vector4(-opposite.x(), -opposite.y(), -opposite.z(), 1), cube.corners[i]) << "corner " << i;
    }

    const Box4<double> offCentre(Vector4(10, 0, 0, 1), Vector4(2, 4, 6, 0));
    EXPECT_EQ(Vector4(11, 2, 3, 1), offCentre.corners[0]);
    EXPECT_EQ(Vector4(9, -2, -3, 1), offCentre.corners[4]);
}

TEST(MathBox, TransformKeepsSizeAndSnapsOnlyTheCentre)
{
    const Box4<double> cube(2.0);
    const Box4<double> scaled = cube.transform(Matrix4::scaling(3));
    EXPECT_EQ(Vector4(2, 2, 2, 0), scaled.size);
    EXPECT_EQ(Vector4(0, 0, 0, 1), scaled.center);
    EXPECT_EQ(Vector4(3, 3, 3, 1), scaled.corners[0]);
    EXPECT_EQ(Vector4(-3, 3, -3, 1), scaled.corners[5]);

    const double nearlyOne = 1.0 - 3e-13;
    const Box4<double> moved = Matrix4::translation(-nearlyOne, 3e-13, 0) * cube;
    EXPECT_EQ(0.0, moved.center.y());
    EXPECT_NE(0.0, moved.corners[0].x());
    EXPECT_LT(std::abs(moved.corners[0].x()), 1e-12);
    EXPECT_EQ(1.0 + 3e-13, moved.corners[0].y());
}

TEST(MathBox, Merge)
{
    Box4<double> empty;
    empty += Box4<double>();
    EXPECT_EQ(Box4<double>(), empty);

    Box4<double> cube(2.0);
    cube += Box4<double>();
    EXPECT_EQ(Box4<double>(2.0), cube);

    // Into an empty box: an oriented box is copied as it is.
    const Box4<double> turned = Box4<double>(2.0).transform(Quat::fromAxisAngle(Vector3(0, 0, 1), pi / 4).toMatrix());
    Box4<double> copy;
    copy += turned;
    EXPECT_EQ(turned, copy);
    EXPECT_NE(Box4<double>(2.0), copy);

    // Otherwise the result is axis-aligned around both.
    Box4<double> merged(2.0);
    merged += Matrix4::translation(4, 0, 0) * Box4<double>(2.0);
    EXPECT_EQ(Vector4(6, 2, 2, 0), merged.size);
    EXPECT_EQ(Vector4(2, 0, 0, 1), merged.center);
    EXPECT_EQ(Vector4(5, 1, 1, 1), merged.corners[0]);
    EXPECT_EQ(Vector4(-1, -1, -1, 1), merged.corners[4]);

    Box4<double> aligned(1.0);
    aligned += turned;
    EXPECT_NEAR(2 * std::sqrt(2.0), aligned.size.x(), 1e-15);
    EXPECT_NEAR(2 * std::sqrt(2.0), aligned.size.y(), 1e-15);
    EXPECT_EQ(2.0, aligned.size.z());
    EXPECT_EQ(Vector4(0, 0, 0, 1), aligned.center);
    EXPECT_NEAR(std::sqrt(2.0), aligned.corners[0].x(), 1e-15);
    EXPECT_NEAR(std::sqrt(2.0), aligned.corners[0].y(), 1e-15);
}

TEST(MathBox, DumpLogsCentreSizeAndCorners)
{
    qel::test::LogCapture log;
    Box4<double>(Vector4(0.5, 0, 1e-20, 1), Vector4(2, 2, 2, 0)).dump();
    const auto records = log.records();
    ASSERT_EQ(10u, records.size());
    EXPECT_EQ(QString("Center: (0.5, 0, 1e-20, 1)"), records[0].text);
    EXPECT_EQ(940, records[0].line);
    EXPECT_EQ(QString("Size: (2, 2, 2, 0)"), records[1].text);
    EXPECT_EQ(941, records[1].line);
    EXPECT_EQ(QString("Vertex #0: (1.5, 1, 1, 1)"), records[2].text);
    EXPECT_EQ(QString("Vertex #7: (1.5, -1, -1, 1)"), records[9].text);
    for (const auto& record : records) {
        EXPECT_EQ(4000u, record.level);
        EXPECT_EQ(QString("kernel/math/box4"), record.file);
        EXPECT_EQ(QString("qel::math::Box4<double>::dump"), record.function);
    }
    EXPECT_EQ(945, records[9].line);
}

TEST(MathPlane, ConstructionAndDistance)
{
    const auto plane = Plane<double>::fromPoints(Vector3(0, 0, 5), Vector3(2, 0, 5), Vector3(0, 3, 5));
    EXPECT_EQ(Vector3(0, 0, 1), plane.normal);
    EXPECT_EQ(5.0, plane.distance);
    EXPECT_EQ(2.0, plane.signedDistance(Vector3(3, 3, 7)));
    EXPECT_EQ(-5.0, plane.signedDistance(Vector4(0, 0, 0, 1)));
    EXPECT_EQ(Vector4(0, 0, 1, -5), plane.getEquation());

    const auto fromBase = Plane<double>::fromPointAndNormal(Vector4(1, 2, 3, 1), Vector4(0, 0, 2, 0));
    EXPECT_EQ(plane.normal, fromBase.normal);
    EXPECT_EQ(3.0, fromBase.distance);
    EXPECT_EQ(Plane<double>(Vector4(0, 0, 1, 0), 3.0), fromBase);

    const auto degenerate = Plane<double>::fromPoints(Vector3(), Vector3(1, 1, 1), Vector3(2, 2, 2));
    EXPECT_EQ(Vector3(), degenerate.normal);
}
