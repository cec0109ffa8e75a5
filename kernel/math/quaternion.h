#pragma once

#include "kernel/math/matrix.h"
#include "kernel/math/numerictraits.h"
#include "kernel/math/vector.h"
#include "kernel/util/exception.h"

#include <QString>
#include <cmath>
#include <string>

namespace qel {
namespace math {

// A rotation quaternion (x, y, z, w), w the real part.
//
// The conversions to and from Matrix are deliberately the transpose of the
// usual column-vector rotation matrix: toMatrix() of the quaternion of axis a
// and angle t turns by -t about a when applied as M * v. fromMatrix() reads
// the matrix the same transposed way, so matrix -> quaternion -> matrix is the
// identity on rotations and code that uses both conversions stays
// consistent. A quaternion taken from elsewhere must respect this.
template<class T>
class Quaternion
{
public:
    typedef NumericTraits<T> Traits;

    // All zero; its matrix is the identity.
    Quaternion() : values{Traits::Zero, Traits::Zero, Traits::Zero, Traits::Zero} {}
    Quaternion(T x, T y, T z, T w) : values{x, y, z, w} {}
    Quaternion(const Vector<T, 3>& vectorPart, T w) : values{vectorPart[0], vectorPart[1], vectorPart[2], w} {}

    T& x() { return values[0]; }
    const T& x() const { return values[0]; }
    T& y() { return values[1]; }
    const T& y() const { return values[1]; }
    T& z() { return values[2]; }
    const T& z() const { return values[2]; }
    T& w() { return values[3]; }
    const T& w() const { return values[3]; }
    T& operator[](int index) { return values[index]; }
    const T& operator[](int index) const { return values[index]; }

    Vector<T, 3> getVectorPart() const { return Vector<T, 3>(values[0], values[1], values[2]); }

    bool operator==(const Quaternion& other) const
    {
        return values[0] == other.values[0] && values[1] == other.values[1] && values[2] == other.values[2]
            && values[3] == other.values[3];
    }
    bool operator!=(const Quaternion& other) const { return !(*this == other); }

    // The axis (first three components of any vector) is normalised unless it
    // is zero; the angle is in radians.
    template<int N>
    static Quaternion fromAxisAngle(const Vector<T, N>& axis, T angle)
    {
        const Vector<T, 3> unitAxis = Vector<T, 3>(axis).getNormalized();
        const T half = angle / (Traits::One + Traits::One);
        return Quaternion(unitAxis * std::sin(half), std::cos(half));
    }

    // Reads the upper 3 by 3 block with m(i,j) at index 4i + j, i.e. row by
    // row of the memory order, and pivots on the largest of the four
    // candidates so that no small divisor occurs.
    static Quaternion fromMatrix(const Matrix<T, 4, 4>& matrix)
    {
        auto m = [&matrix](int i, int j) { return matrix[4 * i + j]; };
        const T one = Traits::One;
        const T candidates[4] = {one + m(0, 0) + m(1, 1) + m(2, 2), one + m(0, 0) - m(1, 1) - m(2, 2),
                                 one - m(0, 0) + m(1, 1) - m(2, 2), one - m(0, 0) - m(1, 1) + m(2, 2)};
        int largest = 0;
        for (int i = 1; i < 4; ++i) {
            if (candidates[i] > candidates[largest])
                largest = i;
        }
        const T s = std::sqrt((one + one + one + one) * candidates[largest]);
        const T quarter = s / (one + one + one + one);
        switch (largest) {
        case 0:
            return Quaternion((m(2, 1) - m(1, 2)) / s, (m(0, 2) - m(2, 0)) / s, (m(1, 0) - m(0, 1)) / s, quarter);
        case 1:
            return Quaternion(quarter, (m(0, 1) + m(1, 0)) / s, (m(2, 0) + m(0, 2)) / s, (m(2, 1) - m(1, 2)) / s);
        case 2:
            return Quaternion((m(0, 1) + m(1, 0)) / s, quarter, (m(1, 2) + m(2, 1)) / s, (m(0, 2) - m(2, 0)) / s);
        default:
            return Quaternion((m(2, 0) + m(0, 2)) / s, (m(1, 2) + m(2, 1)) / s, quarter, (m(1, 0) - m(0, 1)) / s);
        }
    }

    // The identity with the (transposed) rotation in its upper 3 by 3 block.
    // The quaternion needn't be unit; a zero one gives the identity.
    Matrix<T, 4, 4> toMatrix() const
    {
        const T n = x() * x() + y() * y() + z() * z() + w() * w();
        const T f = n > Traits::Zero ? (Traits::One + Traits::One) / n : Traits::Zero;
        const T xx = x() * x() * f, yy = y() * y() * f, zz = z() * z() * f;
        const T xy = x() * y() * f, xz = x() * z() * f, yz = y() * z() * f;
        const T wx = w() * x() * f, wy = w() * y() * f, wz = w() * z() * f;

        Matrix<T, 4, 4> result = Matrix<T, 4, 4>::identity();
        result(0, 0) = Traits::One - (yy + zz);
        result(0, 1) = xy + wz;
        result(0, 2) = xz - wy;
        result(1, 0) = xy - wz;
        result(1, 1) = Traits::One - (xx + zz);
        result(1, 2) = yz + wx;
        result(2, 0) = xz + wy;
        result(2, 1) = yz - wx;
        result(2, 2) = Traits::One - (xx + yy);
        return result;
    }

    // Hamilton product; the snapping keeps exact zeros in products of axis
    // aligned rotations.
    Quaternion operator*(const Quaternion& other) const
    {
        const T w1 = w();
        const T w2 = other.w();
        const Vector<T, 3> a = getVectorPart();
        const Vector<T, 3> b = other.getVectorPart();
        const Vector<T, 3> across = a.cross(b);

        Quaternion result;
        for (int i = 0; i < 3; ++i) {
            const T scaledSum = snap(snap(b[i] * w1) + snap(a[i] * w2));
            result[i] = snap(scaledSum + across[i]);
        }
        result.w() = w1 * w2 - snap(a.dot(b));
        return result;
    }

    Quaternion getConjugate() const { return Quaternion(-x(), -y(), -z(), w()); }

    // The conjugate divided by the squared norm, each component snapped.
    // A quaternion whose squared norm is zero (also by underflow) or not
    // finite has no usable inverse: that raises qel::Exception rather than
    // handing on infinities or NaN.
    Quaternion getInverse() const
    {
        const T squaredNorm = x() * x() + y() * y() + z() * z() + w() * w();
        if (squaredNorm == Traits::Zero || !std::isfinite(squaredNorm))
            throwNotInvertible();
        const Quaternion conjugate = getConjugate();
        Quaternion result;
        for (int i = 0; i < 4; ++i) {
            result[i] = snap(conjugate[i] / squaredNorm);
            if (!std::isfinite(result[i]))
                throwNotInvertible();
        }
        return result;
    }

private:
    [[noreturn]] static void throwNotInvertible()
    {
        const std::string function = std::string("qel::math::Quaternion<") + Traits::name() + ">::getInverse";
        throw qel::Exception(QStringLiteral("Can't build inverse, because the quaternion is zero or not finite!"),
                             "kernel/math/quaternion", __LINE__, function.c_str());
    }

    T values[4];
};

} // namespace math
} // namespace qel
