#pragma once

#include "kernel/log/logger.h"
#include "kernel/math/matrix.h"
#include "kernel/math/numerictraits.h"
#include "kernel/math/vector.h"

#include <QString>
#include <algorithm>
#include <string>

namespace qel {
namespace math {

// An oriented box kept as explicit points. A box whose center.w is Zero is
// empty (the default); a valid box has center.w One and size.w Zero.
//
// Corner order, signs in front of the half extents (x, y, z):
//   0 (+,+,+)  1 (+,-,+)  2 (-,-,+)  3 (-,+,+)
//   4 (-,-,-)  5 (-,+,-)  6 (+,+,-)  7 (+,-,-)
// so corner i + 4 (modulo 8) lies opposite corner i. Drawing and ray tests
// index the corners by these numbers.
template<class T>
class Box4
{
public:
    typedef NumericTraits<T> Traits;
    typedef Vector<T, 4> Vector4;

    static constexpr int CornerCount = 8;

    // All zero: empty.
    Box4() = default;

    // A cube of the given edge length around the origin.
    explicit Box4(T edge)
        : center(Traits::Zero, Traits::Zero, Traits::Zero, Traits::One),
          size(edge, edge, edge, Traits::Zero)
    {
        updateCorners();
    }

    Box4(const Vector4& boxCenter, const Vector4& boxSize) : center(boxCenter), size(boxSize) { updateCorners(); }

    bool isEmpty() const { return center.w() == Traits::Zero; }

    // Rebuilds the corners from center and size (axis-aligned), each with w One.
    void updateCorners()
    {
        static const int signs[CornerCount][3] = {{1, 1, 1},    {1, -1, 1}, {-1, -1, 1}, {-1, 1, 1},
                                                  {-1, -1, -1}, {-1, 1, -1}, {1, 1, -1}, {1, -1, -1}};
        const T two = Traits::One + Traits::One;
        const T half[3] = {size.x() / two, size.y() / two, size.z() / two};
        for (int i = 0; i < CornerCount; ++i) {
            for (int axis = 0; axis < 3; ++axis)
                corners[i][axis] = signs[i][axis] > 0 ? center[axis] + half[axis] : center[axis] - half[axis];
            corners[i].w() = Traits::One;
        }
    }

    // The box as seen through the matrix. The size is kept as it is: a
    // scale in the matrix must be applied to it by the caller.
    [[nodiscard]] Box4 transform(const Matrix<T, 4, 4>& matrix) const
    {
        Box4 result;
        result.size = size;
        result.center = matrix * center;
        for (int i = 0; i < 4; ++i)
            result.center[i] = snap(result.center[i]);
        for (int i = 0; i < CornerCount; ++i)
            result.corners[i] = matrix * corners[i];
        return result;
    }

    // Merge. An empty other changes nothing; into an empty box the other is
    // copied as it is (oriented); otherwise the result is the axis-aligned
    // box around the corners of both.
    Box4& operator+=(const Box4& other)
    {
        if (other.isEmpty())
            return *this;
        if (isEmpty()) {
            *this = other;
            return *this;
        }
        T maximum[3] = {Traits::nonpositiveMin(), Traits::nonpositiveMin(), Traits::nonpositiveMin()};
        T minimum[3] = {Traits::max(), Traits::max(), Traits::max()};
        const Box4* sources[2] = {this, &other};
        for (const Box4* box : sources) {
            for (const Vector4& corner : box->corners) {
                for (int axis = 0; axis < 3; ++axis) {
                    maximum[axis] = std::max(maximum[axis], corner[axis]);
                    minimum[axis] = std::min(minimum[axis], corner[axis]);
                }
            }
        }
        const T two = Traits::One + Traits::One;
        for (int axis = 0; axis < 3; ++axis) {
            size[axis] = snap(maximum[axis] - minimum[axis]);
            center[axis] = snap(snap(maximum[axis] + minimum[axis]) / two);
        }
        size.w() = Traits::Zero;
        center.w() = Traits::One;
        updateCorners();
        return *this;
    }

    bool operator==(const Box4& other) const
    {
        if (center != other.center || size != other.size)
            return false;
        for (int i = 0; i < CornerCount; ++i) {
            if (corners[i] != other.corners[i])
                return false;
        }
        return true;
    }
    bool operator!=(const Box4& other) const { return !(*this == other); }

    // Logs centre, size and corners at level 4000.
    void dump() const
    {
        const std::string function = std::string("qel::math::Box4<") + Traits::name() + ">::dump";
        qel::log::Logger::log(4000, "kernel/math/box4", 940, function.c_str(), nullptr,
                              QStringLiteral("Center: (%1, %2, %3, %4)")
                                  .arg(text(center[0]), text(center[1]), text(center[2]), text(center[3])));
        qel::log::Logger::log(4000, "kernel/math/box4", 941, function.c_str(), nullptr,
                              QStringLiteral("Size: (%1, %2, %3, %4)")
                                  .arg(text(size[0]), text(size[1]), text(size[2]), text(size[3])));
        for (int i = 0; i < CornerCount; ++i) {
            const Vector4& corner = corners[i];
            qel::log::Logger::log(4000, "kernel/math/box4", 945, function.c_str(), nullptr,
                                  QStringLiteral("Vertex #%1: (%2, %3, %4, %5)")
                                      .arg(QString::number(i), text(corner[0]), text(corner[1]),
                                           text(corner[2]), text(corner[3])));
        }
    }

    Vector4 center;
    Vector4 size;
    Vector4 corners[CornerCount];

private:
    static QString text(T value) { return QString::number(value, 'g'); }
};

// The box transformed by the matrix, see Box4::transform.
template<class T>
inline Box4<T> operator*(const Matrix<T, 4, 4>& matrix, const Box4<T>& box)
{
    return box.transform(matrix);
}

} // namespace math
} // namespace qel
