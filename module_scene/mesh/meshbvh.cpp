#include "module_scene/mesh/meshbvh.h"

#include "module_scene/mesh/cmesho.h"

#include <algorithm>
#include <cmath>

namespace qel {
namespace scene {

namespace {

// Surface-area heuristic: the cost of one more box test against that of one face test
// (three corners transformed and a triangle test).
const double TraversalCost = 0.25;
const int BinCount = 12;
// Ranges this small stay leaves: fewer nodes, for a face test or two more per ray.
const std::uint32_t MinSplitFaces = 4;
// Past this level ranges are halved by count, so that the depth stays bounded whatever the
// geometry (many faces with one centre, for instance).
const int HalvingLevel = 48;

struct Bounds
{
    double lower[3] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                       std::numeric_limits<double>::max()};
    double upper[3] = {-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max(),
                       -std::numeric_limits<double>::max()};

    bool isEmpty() const { return lower[0] > upper[0]; }

    void grow(const Bounds& other)
    {
        for (int axis = 0; axis < 3; ++axis) {
            lower[axis] = std::min(lower[axis], other.lower[axis]);
            upper[axis] = std::max(upper[axis], other.upper[axis]);
        }
    }

    void grow(double x, double y, double z)
    {
        const double point[3] = {x, y, z};
        for (int axis = 0; axis < 3; ++axis) {
            lower[axis] = std::min(lower[axis], point[axis]);
            upper[axis] = std::max(upper[axis], point[axis]);
        }
    }

    double centre(int axis) const { return (lower[axis] + upper[axis]) * 0.5; }

    // Half the surface; only ratios are used.
    double area() const
    {
        if (isEmpty())
            return 0.0;
        const double x = upper[0] - lower[0];
        const double y = upper[1] - lower[1];
        const double z = upper[2] - lower[2];
        return x * y + y * z + z * x;
    }
};

bool isFinite(const math::Vector<double, 3>& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

} // namespace

// Splits ranges of face places by the surface-area heuristic over binned box centres.
class MeshBVH::Builder
{
public:
    Builder(MeshBVH& tree, std::vector<Bounds>&& boxes) : tree(tree), boxes(std::move(boxes)) {}

    void build()
    {
        if (tree.places.empty())
            return;
        tree.nodes.reserve(tree.places.size() / 2 + 1);
        buildNode(0, static_cast<std::uint32_t>(tree.places.size()), 0);
    }

private:
    struct Split
    {
        int axis = -1;
        int bin = 0;
        double cost = std::numeric_limits<double>::max();
    };

    struct Bin
    {
        Bounds bounds;
        std::uint32_t count = 0;
    };

    std::uint32_t buildNode(std::uint32_t begin, std::uint32_t end, int level)
    {
        const std::uint32_t index = static_cast<std::uint32_t>(tree.nodes.size());
        tree.nodes.push_back(Node());
        tree.depth = std::max(tree.depth, level);
        Bounds bounds;
        Bounds centres;
        for (std::uint32_t i = begin; i < end; ++i) {
            const Bounds& box = boxes[tree.places[i]];
            bounds.grow(box);
            centres.grow(box.centre(0), box.centre(1), box.centre(2));
        }
        Node& node = tree.nodes[index];
        std::copy(bounds.lower, bounds.lower + 3, node.lower);
        std::copy(bounds.upper, bounds.upper + 3, node.upper);

        const std::uint32_t count = end - begin;
        std::uint32_t middle = begin;
        if (count <= MinSplitFaces || !divide(begin, end, level, bounds, centres, middle)) {
            makeLeaf(index, begin, count);
            return index;
        }
        buildNode(begin, middle, level + 1);
        const std::uint32_t second = buildNode(middle, end, level + 1);
        tree.nodes[index].first = second;
        tree.nodes[index].count = 0;
        return index;
    }

    void makeLeaf(std::uint32_t index, std::uint32_t begin, std::uint32_t count)
    {
        tree.nodes[index].first = begin;
        tree.nodes[index].count = count;
    }

    // False when the range is better (or only) kept as one leaf.
    bool divide(std::uint32_t begin, std::uint32_t end, int level, const Bounds& bounds, const Bounds& centres,
                std::uint32_t& middle)
    {
        const std::uint32_t count = end - begin;
        if (level < HalvingLevel) {
            const Split split = findSplit(begin, end, bounds, centres);
            if (split.axis >= 0 && (count > MaxLeafFaces || split.cost < static_cast<double>(count))) {
                middle = partition(begin, end, centres, split);
                return true;
            }
        }
        if (count <= MaxLeafFaces)
            return false;
        middle = halve(begin, end, centres);
        return true;
    }

    int binOf(const Bounds& box, int axis, const Bounds& centres) const
    {
        const double extent = centres.upper[axis] - centres.lower[axis];
        const double scaled = (box.centre(axis) - centres.lower[axis]) * (BinCount / extent);
        return std::min(BinCount - 1, std::max(0, static_cast<int>(scaled)));
    }

    // Along the longest extent of the centres only: nearly as good as trying all three axes,
    // at a third of the cost.
    Split findSplit(std::uint32_t begin, std::uint32_t end, const Bounds& bounds, const Bounds& centres) const
    {
        Split best;
        const int axis = longestAxis(centres);
        if (!(centres.upper[axis] > centres.lower[axis]))
            return best;
        Bin bins[BinCount];
        for (std::uint32_t i = begin; i < end; ++i) {
            const Bounds& box = boxes[tree.places[i]];
            Bin& bin = bins[binOf(box, axis, centres)];
            bin.bounds.grow(box);
            ++bin.count;
        }
        // Costs of all splits behind bin b, swept from the right.
        double rightCost[BinCount];
        Bounds right;
        std::uint32_t rightCount = 0;
        for (int b = BinCount - 1; b > 0; --b) {
            right.grow(bins[b].bounds);
            rightCount += bins[b].count;
            rightCost[b] = right.area() * rightCount;
        }
        const double parentArea = bounds.area();
        Bounds left;
        std::uint32_t leftCount = 0;
        for (int b = 0; b < BinCount - 1; ++b) {
            left.grow(bins[b].bounds);
            leftCount += bins[b].count;
            if (leftCount == 0 || leftCount == end - begin)
                continue;
            const double cost = parentArea > 0.0
                                    ? TraversalCost + (left.area() * leftCount + rightCost[b + 1]) / parentArea
                                    : TraversalCost + static_cast<double>(end - begin);
            if (cost < best.cost) {
                best.axis = axis;
                best.bin = b;
                best.cost = cost;
            }
        }
        return best;
    }

    static int longestAxis(const Bounds& bounds)
    {
        int axis = 0;
        for (int candidate = 1; candidate < 3; ++candidate) {
            if (bounds.upper[candidate] - bounds.lower[candidate] > bounds.upper[axis] - bounds.lower[axis])
                axis = candidate;
        }
        return axis;
    }

    std::uint32_t partition(std::uint32_t begin, std::uint32_t end, const Bounds& centres, const Split& split)
    {
        std::uint32_t* first = tree.places.data() + begin;
        std::uint32_t* last = tree.places.data() + end;
        const std::uint32_t* middle = std::partition(first, last, [&](std::uint32_t place) {
            return binOf(boxes[place], split.axis, centres) <= split.bin;
        });
        return begin + static_cast<std::uint32_t>(middle - first);
    }

    // By count along the longest extent of the centres; ties fall either way.
    std::uint32_t halve(std::uint32_t begin, std::uint32_t end, const Bounds& centres)
    {
        const int axis = longestAxis(centres);
        const std::uint32_t middle = begin + (end - begin) / 2;
        std::nth_element(tree.places.begin() + begin, tree.places.begin() + middle, tree.places.begin() + end,
                         [&](std::uint32_t a, std::uint32_t b) {
                             return boxes[a].centre(axis) < boxes[b].centre(axis);
                         });
        return middle;
    }

    MeshBVH& tree;
    const std::vector<Bounds> boxes;
};

MeshBVH::MeshBVH(const CMeshO& mesh)
{
    std::vector<Bounds> boxes(mesh.face.size());
    places.reserve(mesh.face.size());
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        const CFaceO& face = mesh.face[place];
        if (!face.hasCorners())
            continue;
        for (const CVertexO* corner : face.v) {
            if (!isFinite(corner->coord)) {
                usable = false;
                places.clear();
                return;
            }
            boxes[place].grow(corner->coord.x(), corner->coord.y(), corner->coord.z());
        }
        places.push_back(static_cast<std::uint32_t>(place));
    }
    Builder(*this, std::move(boxes)).build();
}

MeshBVH::Point MeshBVH::getLower() const
{
    if (nodes.empty())
        return Point();
    return Point(nodes[0].lower[0], nodes[0].lower[1], nodes[0].lower[2]);
}

MeshBVH::Point MeshBVH::getUpper() const
{
    if (nodes.empty())
        return Point();
    return Point(nodes[0].upper[0], nodes[0].upper[1], nodes[0].upper[2]);
}

MeshBVH::Ray MeshBVH::makeRay(const Point& origin, const Point& direction, double margin)
{
    Ray ray;
    for (int axis = 0; axis < 3; ++axis) {
        ray.origin[axis] = origin[axis];
        ray.parallel[axis] = direction[axis] == 0.0;
        ray.inverse[axis] = ray.parallel[axis] ? 0.0 : 1.0 / direction[axis];
    }
    ray.margin = margin;
    return ray;
}

} // namespace scene
} // namespace qel
