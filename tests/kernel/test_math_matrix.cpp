#include "kernel/math/matrix.h"
#include "kernel/math/vector.h"
#include "kernel/util/exception.h"
#include "support/logcapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

using qel::math::Matrix;
using qel::math::NumericTraits;
using qel::math::Vector;

typedef Matrix<double, 4, 4> Matrix4;
typedef Vector<double, 4> Vector4;

namespace {

void expectNear(const Matrix4& expected, const Matrix4& actual, double tolerance)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], actual[i], tolerance) << "index " << i;
}

// Runs the call and returns the exception it raised (or fails).
template<class Call>
qel::Exception catchException(Call call)
{
    try {
        call();
    } catch (const qel::Exception& exception) {
        return exception;
    }
    ADD_FAILURE() << "no exception";
    return qel::Exception(QString(), "", 0, "");
}

} // namespace

TEST(MathMatrix, MemoryOrderIsOpenGLs)
{
    EXPECT_EQ(Matrix4(), Matrix4::fromRows({}));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(0.0, Matrix4()[i]);

    const Matrix4 m = Matrix4::fromRows({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(4.0, m[1]); // row 1, column 0
    EXPECT_EQ(1.0, m[4]); // row 0, column 1
    EXPECT_EQ(m(2, 3), m.data()[14]);

    // As glMultMatrixd reads it: the translation in 12, 13, 14 and 1 in 15.
    const Matrix4 t = Matrix4::translation(5, 6, 7);
    const double gl[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1};
    EXPECT_EQ(Matrix4(gl), t);
    EXPECT_EQ(Vector4(5, 6, 7, 1), t.getColumn(3));
    EXPECT_EQ(Vector4(6, 8, 10, 1), t * Vector4(1, 2, 3, 1));
    EXPECT_EQ(Vector4(1, 2, 3, 0), t * Vector4(1, 2, 3, 0)); // directions don't move

    // Column vectors: in T * S the scale acts first.
    const Matrix4 s = Matrix4::scaling(2);
    EXPECT_EQ(Vector4(7, 8, 9, 1), (t * s) * Vector4(1, 1, 1, 1));
    EXPECT_EQ(Vector4(12, 14, 16, 1), (s * t) * Vector4(1, 1, 1, 1));
    EXPECT_EQ(m.getTranspose()(1, 2), m(2, 1));
}

TEST(MathMatrix, OnlyTheAssigningProductSnaps)
{
    const Matrix4 small = Matrix4::scaling(1e-7);
    const Matrix4 product = small * small;
    EXPECT_EQ(1e-7 * 1e-7, product(0, 0));
    EXPECT_EQ(1.0, product(3, 3));

    Matrix4 accumulated = small;
    accumulated *= small;
    EXPECT_EQ(0.0, accumulated(0, 0));
    EXPECT_EQ(0.0, accumulated(2, 2));
    EXPECT_EQ(1.0, accumulated(3, 3));

    // A value just at Epsilon stays.
    Matrix4 atEpsilon = Matrix4::scaling(NumericTraits<double>::Epsilon);
    atEpsilon *= Matrix4::identity();
    EXPECT_EQ(NumericTraits<double>::Epsilon, atEpsilon(0, 0));
}

TEST(MathMatrix, InverseOfIdentityIsACopy)
{
    const Matrix4 identity = Matrix4::identity();
    EXPECT_EQ(identity, identity.getInverse());
    EXPECT_TRUE(identity.getInverse().isIdentity());
}

TEST(MathMatrix, FullPivotingInvertsRandomMatrices)
{
    std::mt19937 generator(1234);
    std::uniform_real_distribution<double> value(-10.0, 10.0);
    for (int trial = 0; trial < 200; ++trial) {
        Matrix4 m;
        for (int i = 0; i < 16; ++i)
            m[i] = value(generator);
        const Matrix4 inverse = m.getInverse();
        expectNear(Matrix4::identity(), m * inverse, 1e-9);
        expectNear(Matrix4::identity(), inverse * m, 1e-9);
    }

    // Zeros on the diagonal need row and column swaps.
    const Matrix4 permutation = Matrix4::fromRows({0, 0, 3, 0, 2, 0, 0, 0, 0, 0, 0, 4, 0, 5, 0, 0});
    expectNear(Matrix4::identity(), permutation * permutation.getInverse(), 1e-15);

    const Matrix4 transform = Matrix4::translation(1, -2, 3) * Matrix4::scaling(2, 4, 8);
    const Matrix4 expected = Matrix4::scaling(0.5, 0.25, 0.125) * Matrix4::translation(-1, 2, -3);
    expectNear(expected, transform.getInverse(), 1e-15);

    // 3 by 3 works the same way.
    typedef Matrix<double, 3, 3> Matrix3;
    const Matrix3 m3 = Matrix3::fromRows({0, 2, 1, 1, 0, 0, 3, 1, 5});
    const Matrix3 check = m3 * m3.getInverse();
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(Matrix3::identity()[i], check[i], 1e-14);
}

TEST(MathMatrix, SingularMatrixThrowsTinyPivotDoesNot)
{
    Matrix4 zeroRow = Matrix4::translation(1, 2, 3);
    zeroRow.setRow(1, Vector4());
    const Matrix4 before = zeroRow;
    const qel::Exception exception = catchException([&zeroRow] { (void)zeroRow.getInverse(); });
    EXPECT_EQ(QString("Can't build inverse, because it's a singular matrix!"), exception.getMessage());
    EXPECT_EQ(QString("kernel/math/matrix"), exception.getFile());
    EXPECT_EQ(774u, exception.getLine());
    EXPECT_EQ(QString("qel::math::Matrix<double,4,4>::getInverse"), exception.getFunction());
    EXPECT_EQ(before, zeroRow);

    EXPECT_THROW((void)Matrix4().getInverse(), qel::Exception);
    EXPECT_THROW((void)Matrix4::scaling(0).getInverse(), qel::Exception);
    // Two equal rows: singular only after elimination.
    EXPECT_THROW((void)Matrix4::fromRows({1, 2, 3, 4, 1, 2, 3, 4, 0, 1, 0, 0, 0, 0, 1, 1}).getInverse(),
                 qel::Exception);

    // No tolerance: a tiny but non-zero pivot inverts.
    const Matrix4 tiny = Matrix4::scaling(1e-200);
    Matrix4 inverse;
    EXPECT_NO_THROW(inverse = tiny.getInverse());
    EXPECT_DOUBLE_EQ(1e200, inverse(0, 0));
    EXPECT_EQ(1.0, inverse(3, 3));
}

TEST(MathMatrix, UsableTransformsAreFiniteAndInvertible)
{
    EXPECT_TRUE(Matrix4::identity().isInvertible());
    EXPECT_TRUE(Matrix4::translation(1e300, -2, 3).isInvertible());
    EXPECT_TRUE(Matrix4::scaling(1e-200).isInvertible());

    Matrix4 notANumber = Matrix4::identity();
    notANumber[13] = std::nan("");
    Matrix4 infinite = Matrix4::identity();
    infinite[0] = std::numeric_limits<double>::infinity();
    for (const Matrix4& broken : {notANumber, infinite}) {
        EXPECT_FALSE(broken.isFinite());
        EXPECT_FALSE(broken.isInvertible());
    }
    EXPECT_TRUE(Matrix4().isFinite());
    EXPECT_FALSE(Matrix4().isInvertible());
    EXPECT_FALSE(Matrix4::scaling(0).isInvertible());
    EXPECT_FALSE(Matrix4::fromRows({1, 2, 3, 4, 1, 2, 3, 4, 0, 1, 0, 0, 0, 0, 1, 1}).isInvertible());
    // Invertible on paper, but the inverse overflows.
    EXPECT_FALSE(Matrix4::scaling(1e-310).isInvertible());
}

TEST(MathMatrix, DumpLogsTitleAndRows)
{
    const Matrix4 m = Matrix4::translation(0.5, -2, 1e-20);
    qel::test::LogCapture log;
    m.dump("Transform");

    const auto records = log.records();
    ASSERT_EQ(5u, records.size());
    EXPECT_EQ(QString("Transform"), records[0].text);
    EXPECT_EQ(914, records[0].line);
    const QString address = QString::number(reinterpret_cast<quintptr>(&m), 16);
    EXPECT_EQ(address + " 0 : |\t1\t0\t0\t0.5\t|", records[1].text);
    EXPECT_EQ(address + " 2 : |\t0\t0\t1\t1e-20\t|", records[3].text);
    EXPECT_EQ(address + " 3 : |\t0\t0\t0\t1\t|", records[4].text);
    for (const auto& record : records) {
        EXPECT_EQ(4000u, record.level);
        EXPECT_EQ(QString("kernel/math/matrix"), record.file);
        EXPECT_EQ(QString("qel::math::Matrix<double,4,4>::dump"), record.function);
        EXPECT_TRUE(record.category.isEmpty());
    }
    EXPECT_EQ(923, records[2].line);

    log.clear();
    m.dump(QString());
    EXPECT_EQ(4u, log.records().size());
}

TEST(MathVector, DifferencesSnapOnlyInFourComponents)
{
    const Vector4 a(1.0, 2.0, 3.0, 1.0);
    const Vector4 b(1.0 + 1e-13, 2.5, 3.0, 1.0);
    const Vector4 difference = a - b;
    EXPECT_EQ(0.0, difference.x());
    EXPECT_EQ(-0.5, difference.y());
    EXPECT_EQ(0.0, difference.w());

    const Vector<double, 3> a3(1.0, 2.0, 3.0);
    const Vector<double, 3> b3(1.0 + 1e-13, 2.0, 3.0);
    EXPECT_NE(0.0, (a3 - b3).x());
    // Sums and scalings keep small values.
    EXPECT_EQ(1e-13, (Vector4() + Vector4(1e-13, 0, 0, 0)).x());
    EXPECT_EQ(5e-14, (Vector4(1e-13, 0, 0, 0) * 0.5).x());
}

TEST(MathVector, LengthNormaliseDotCross)
{
    EXPECT_EQ(5.0, Vector4(0, 3, 0, 4).length()); // w counts
    EXPECT_EQ(5.0, (Vector<double, 3>(3, 4, 0).length()));
    Vector4 zero;
    zero.normalize();
    EXPECT_EQ(Vector4(), zero);
    EXPECT_EQ(Vector4(0, 0.6, 0, 0.8), Vector4(0, 3, 0, 4).normalize());
    EXPECT_EQ(32.0, Vector4(1, 2, 3, 0).dot(Vector4(4, 5, 6, 9)));
    EXPECT_EQ(Vector4(0, 0, 1, 0), Vector4(1, 0, 0, 7).cross(Vector4(0, 1, 0, 9)));
    EXPECT_EQ((Vector<float, 3>(0, 0, -1)), (Vector<float, 3>(0, 1, 0).cross(Vector<float, 3>(1, 0, 0))));
    EXPECT_EQ(Vector4(1, 2, 3, 1), Vector4(Vector<double, 3>(1, 2, 3), 1.0));
}

TEST(MathVector, Homogenize)
{
    // w = 1: nothing divides, nothing snaps.
    Vector4 point(0.1 + 0.2, 1e-15, -7.25, 1.0);
    const Vector4 before = point;
    point.homogenize();
    EXPECT_EQ(0, std::memcmp(before.data(), point.data(), sizeof(double) * 4));

    Vector4 scaled(2.0, 4e-13, -6.0, 2.0);
    scaled.homogenize();
    EXPECT_EQ(Vector4(1.0, 0.0, -3.0, 1.0), scaled);

    Vector4 direction(1.0, 2.0, 3.0, 0.0);
    const qel::Exception exception = catchException([&direction] { direction.homogenize(); });
    EXPECT_EQ(QString("Vector cannot homogenized, because last element is zero."), exception.getMessage());
    EXPECT_EQ(QString("kernel/math/vector4"), exception.getFile());
    EXPECT_EQ(275u, exception.getLine());
    EXPECT_EQ(QString("qel::math::Vector<double,4>::homogenize"), exception.getFunction());
    EXPECT_EQ(Vector4(1.0, 2.0, 3.0, 0.0), direction);
}

TEST(MathNumericTraits, SnapAndLimits)
{
    typedef NumericTraits<double> Traits;
    EXPECT_EQ(std::numeric_limits<double>::lowest(), Traits::nonpositiveMin());
    EXPECT_LT(Traits::Epsilon, 1e-9);
    EXPECT_GT(Traits::Epsilon, 1e3 * std::numeric_limits<double>::epsilon());
    EXPECT_EQ(0.0, qel::math::snap(-Traits::Epsilon / 2));
    EXPECT_FALSE(std::signbit(qel::math::snap(-1e-300)));
    EXPECT_EQ(-Traits::Epsilon, qel::math::snap(-Traits::Epsilon));
    EXPECT_EQ(0.0f, qel::math::snap(1e-7f));
}
