#pragma once

#include "kernel/math/vector.h"

namespace qel {
namespace scene {

// An axis-aligned box as minimum and maximum corner. The empty box is minimum (1,1,1),
// maximum (-1,-1,-1): its centre is the origin, and the first point added replaces it.
class Box3d
{
public:
    typedef math::Vector<double, 3> Point;

    Box3d() { setEmpty(); }
    Box3d(const Point& minimum, const Point& maximum) : min(minimum), max(maximum) {}

    void setEmpty()
    {
        min = Point(1.0, 1.0, 1.0);
        max = Point(-1.0, -1.0, -1.0);
    }
    bool isEmpty() const { return min.x() > max.x() || min.y() > max.y() || min.z() > max.z(); }

    void add(const Point& point)
    {
        if (isEmpty()) {
            min = point;
            max = point;
            return;
        }
        for (int axis = 0; axis < 3; ++axis) {
            if (point[axis] < min[axis])
                min[axis] = point[axis];
            if (point[axis] > max[axis])
                max[axis] = point[axis];
        }
    }

    Point extent() const { return max - min; }
    Point center() const { return (min + max) * 0.5; }

    bool operator==(const Box3d& other) const { return min == other.min && max == other.max; }

    Point min;
    Point max;
};

} // namespace scene
} // namespace qel
