#pragma once

#include "kernel/math/matrix.h"
#include "kernel/math/vector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace scene {

class CMeshO;

// Blocks of faces in storage order (32, 1024, ... faces), each with the box of its corners and
// a cone around its faces' normals, in the mesh's own coordinates. A search backwards through
// the storage order for the last face whose plane a ray crosses ahead of its start can then
// leave out whole blocks whose planes all lie behind the ray for certain: the ray leaves every
// one of them. Certain means beyond any rounding of the world-frame test that the caller runs
// on the faces it is given, so the face found is the one a walk over all faces finds. Every
// face with three corners is covered, deleted ones too.
class MeshCrossingBlocks
{
public:
    typedef math::Vector<double, 3> Point;
    typedef math::Matrix<double, 4, 4> Matrix;

    static constexpr std::size_t BlockFaces = 32;

    explicit MeshCrossingBlocks(const CMeshO& mesh);

    std::size_t getFaceCount() const { return faceCount; }
    std::size_t getLevelCount() const { return levels.size(); }

    // Offers places from the last face backwards to crosses(place), leaving out blocks whose
    // planes all lie behind the ray start + t * direction (world frame; the mesh is placed by
    // `complete`), until crosses returns true; then returns true. Blocks are left out only
    // where `complete` turns and scales alike along all axes; otherwise every face is offered.
    template <class Crosses>
    bool findLast(const Matrix& complete, const Point& start, const Point& direction, Crosses crosses) const;

private:
    struct Block
    {
        double lower[3];
        double upper[3];
        // Unit axis of the normal cone and its half angle; no cone (angle of a right angle or
        // more) for blocks that can't be left out.
        double axis[3];
        double angle;
        // The smallest altitude of the block's faces: how well their normals are defined.
        double altitude;
    };

    // What a query computes once for all blocks.
    struct Frame
    {
        Matrix complete;
        double scale = 0.0;
        Point start;
        Point direction;
        double directionTolerance = 0.0;
        double pointTolerance = 0.0;
        double cornerError = 0.0;
        double localMagnitude = 0.0;
    };

    static bool makeFrame(const Matrix& complete, const Point& start, const Point& direction, double localMagnitude,
                          Frame& frame);
    bool isBehind(const Block& block, const Frame& frame) const;

    template <class Crosses>
    bool findLastIn(std::size_t level, std::size_t block, const Frame& frame, Crosses& crosses) const;
    template <class Crosses>
    bool findLastAmongFaces(std::size_t begin, std::size_t end, Crosses& crosses) const;

    static std::size_t facesPerBlock(std::size_t level);

    std::size_t faceCount = 0;
    double localMagnitude = 0.0;
    // Level 0 holds the smallest blocks.
    std::vector<std::vector<Block>> levels;
};

template <class Crosses>
bool MeshCrossingBlocks::findLast(const Matrix& complete, const Point& start, const Point& direction,
                                  Crosses crosses) const
{
    Frame frame;
    if (levels.empty() || !makeFrame(complete, start, direction, localMagnitude, frame))
        return findLastAmongFaces(0, faceCount, crosses);
    const std::size_t top = levels.size() - 1;
    for (std::size_t block = levels[top].size(); block-- > 0;) {
        if (findLastIn(top, block, frame, crosses))
            return true;
    }
    return false;
}

// The depth is the number of levels: a handful.
template <class Crosses>
bool MeshCrossingBlocks::findLastIn(std::size_t level, std::size_t block, const Frame& frame, Crosses& crosses) const
{
    if (isBehind(levels[level][block], frame))
        return false;
    const std::size_t size = facesPerBlock(level);
    const std::size_t begin = block * size;
    const std::size_t end = begin + size < faceCount ? begin + size : faceCount;
    if (level == 0)
        return findLastAmongFaces(begin, end, crosses);
    const std::size_t childSize = facesPerBlock(level - 1);
    for (std::size_t child = (end + childSize - 1) / childSize; child-- > begin / childSize;) {
        if (findLastIn(level - 1, child, frame, crosses))
            return true;
    }
    return false;
}

template <class Crosses>
bool MeshCrossingBlocks::findLastAmongFaces(std::size_t begin, std::size_t end, Crosses& crosses) const
{
    for (std::size_t place = end; place-- > begin;) {
        if (crosses(place))
            return true;
    }
    return false;
}

} // namespace scene
} // namespace qel
