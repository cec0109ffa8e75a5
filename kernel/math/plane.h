#pragma once

#include "kernel/math/numerictraits.h"
#include "kernel/math/vector.h"

namespace qel {
namespace math {

// The plane of the points p with normal . p == distance. With a unit normal,
// distance is the signed distance of the plane from the origin along it.
template<class T>
class Plane
{
public:
    typedef NumericTraits<T> Traits;

    // Degenerate: zero normal, distance Zero.
    Plane() : distance(Traits::Zero) {}

    // Takes the normal as given (first three components) and the distance.
    template<int N>
    Plane(const Vector<T, N>& planeNormal, T planeDistance) : normal(planeNormal), distance(planeDistance)
    {
    }

    // Through a point, with the normal normalised unless it is zero.
    template<int N, int M>
    static Plane fromPointAndNormal(const Vector<T, N>& point, const Vector<T, M>& normal)
    {
        const Vector<T, 3> unitNormal = Vector<T, 3>(normal).getNormalized();
        return Plane(unitNormal, unitNormal.dot(Vector<T, 3>(point)));
    }

    // Through three points; the normal is (b - a) x (c - a), normalised, so
    // it points to the side from which a, b, c run counter-clockwise. Points
    // on one line give a zero normal.
    template<int N>
    static Plane fromPoints(const Vector<T, N>& a, const Vector<T, N>& b, const Vector<T, N>& c)
    {
        const Vector<T, 3> first(a);
        const Vector<T, 3> edge1 = Vector<T, 3>(b) - first;
        const Vector<T, 3> edge2 = Vector<T, 3>(c) - first;
        return fromPointAndNormal(first, edge1.cross(edge2));
    }

    // Positive on the side the normal points to; a true distance only for a
    // unit normal.
    template<int N>
    T signedDistance(const Vector<T, N>& point) const
    {
        return normal.dot(Vector<T, 3>(point)) - distance;
    }

    // (a, b, c, d) with a x + b y + c z + d = 0 on the plane, the form
    // glClipPlane takes.
    Vector<T, 4> getEquation() const { return Vector<T, 4>(normal[0], normal[1], normal[2], -distance); }

    bool operator==(const Plane& other) const { return normal == other.normal && distance == other.distance; }
    bool operator!=(const Plane& other) const { return !(*this == other); }

    Vector<T, 3> normal;
    T distance;
};

} // namespace math
} // namespace qel
