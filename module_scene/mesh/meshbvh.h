#pragma once

#include "kernel/math/vector.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace qel {
namespace scene {

class CMeshO;

// A bounding volume hierarchy over the faces of a mesh, in the mesh's own coordinates, for
// ray searches. It holds boxes and face places only: the caller tests the candidate faces
// itself, so that its answers stay exactly those of a walk over all faces. Every face with
// three corners is held, deleted ones too (the caller skips them), so that deleting a face
// needs no new hierarchy; moving vertices or changing the face storage does.
class MeshBVH
{
public:
    typedef math::Vector<double, 3> Point;

    // Faces in a leaf at most; a bigger range is always split.
    static constexpr std::uint32_t MaxLeafFaces = 8;
    // Levels below the root at most: deeper ranges are halved by count, which ends within
    // 32 more levels for any 32-bit face count.
    static constexpr int MaxDepth = 96;

    explicit MeshBVH(const CMeshO& mesh);

    // False when a face has a coordinate that is not finite: no box can be trusted then, and
    // the caller has to walk all faces.
    bool isUsable() const { return usable; }
    std::size_t getFaceCount() const { return places.size(); }
    std::size_t getNodeCount() const { return nodes.size(); }
    int getDepth() const { return depth; }
    // The box of all held faces (empty when none): lower and upper corner.
    Point getLower() const;
    Point getUpper() const;

    // Calls visit(place) for every held face whose box, grown by `margin` on all sides, the
    // ray origin + t * direction (t >= 0) meets at a t not beyond the current limit, nearer
    // boxes first. visit returns the new limit (start: the largest double), typically the
    // ray parameter of the best hit so far; boxes entered beyond it are left out, boxes
    // entered exactly at it are not.
    template <class Visit>
    void traverse(const Point& origin, const Point& direction, double margin, Visit visit) const;

private:
    struct Node
    {
        double lower[3];
        double upper[3];
        // A leaf: its faces are places[first, first + count). An inner node (count 0): its
        // children are the next node and the node at `first`.
        std::uint32_t first;
        std::uint32_t count;
    };

    struct Ray
    {
        double origin[3];
        double inverse[3];
        bool parallel[3];
        double margin;
    };

    struct Pending
    {
        std::uint32_t node;
        double enter;
    };

    class Builder;

    // Whether the ray meets the grown box of the node at a t in [0, limit]; enter gets the
    // first such t.
    static bool meets(const Node& node, const Ray& ray, double limit, double& enter);
    static Ray makeRay(const Point& origin, const Point& direction, double margin);

    std::vector<Node> nodes;
    std::vector<std::uint32_t> places;
    bool usable = true;
    int depth = 0;
};

inline bool MeshBVH::meets(const Node& node, const Ray& ray, double limit, double& enter)
{
    double near = 0.0;
    double far = limit;
    for (int axis = 0; axis < 3; ++axis) {
        const double lower = node.lower[axis] - ray.margin;
        const double upper = node.upper[axis] + ray.margin;
        if (ray.parallel[axis]) {
            if (ray.origin[axis] < lower || ray.origin[axis] > upper)
                return false;
            continue;
        }
        double first = (lower - ray.origin[axis]) * ray.inverse[axis];
        double second = (upper - ray.origin[axis]) * ray.inverse[axis];
        if (first > second)
            std::swap(first, second);
        if (first > near)
            near = first;
        if (second < far)
            far = second;
        if (near > far)
            return false;
    }
    enter = near;
    return true;
}

template <class Visit>
void MeshBVH::traverse(const Point& origin, const Point& direction, double margin, Visit visit) const
{
    if (nodes.empty())
        return;
    const Ray ray = makeRay(origin, direction, margin);
    double limit = std::numeric_limits<double>::max();
    // Each level of a descent pushes one node at most.
    Pending stack[MaxDepth + 1];
    int size = 0;
    double enter = 0.0;
    if (meets(nodes[0], ray, limit, enter))
        stack[size++] = Pending{0, enter};
    while (size > 0) {
        const Pending pending = stack[--size];
        if (pending.enter > limit)
            continue;
        std::uint32_t current = pending.node;
        for (;;) {
            const Node& node = nodes[current];
            if (node.count > 0) {
                for (std::uint32_t i = node.first; i < node.first + node.count; ++i)
                    limit = visit(places[i]);
                break;
            }
            std::uint32_t near = current + 1;
            std::uint32_t far = node.first;
            double nearEnter = 0.0;
            double farEnter = 0.0;
            const bool nearMet = meets(nodes[near], ray, limit, nearEnter);
            const bool farMet = meets(nodes[far], ray, limit, farEnter);
            if (nearMet && farMet) {
                if (farEnter < nearEnter) {
                    std::swap(near, far);
                    std::swap(nearEnter, farEnter);
                }
                stack[size++] = Pending{far, farEnter};
                current = near;
            } else if (nearMet) {
                current = near;
            } else if (farMet) {
                current = far;
            } else {
                break;
            }
        }
    }
}

} // namespace scene
} // namespace qel
