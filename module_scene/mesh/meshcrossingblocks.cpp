#include "module_scene/mesh/meshcrossingblocks.h"

#include "module_scene/mesh/cmesho.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {
namespace scene {

namespace {

typedef MeshCrossingBlocks::Point Point;

const double Epsilon = std::numeric_limits<double>::epsilon();
const double HalfPi = 1.57079632679489661923;
// A block with no face has no plane to cross.
const double EmptyBlock = -1.0;
const double NoCone = 4.0;
// Cones this close to a half space decide nothing.
const double WidestCone = HalfPi - 1e-3;
// How far the linear part of a placement may be from a turn times a uniform scale, relative
// to the scale squared.
const double SimilarityTolerance = 1e-9;

// The plane of a face as the blocks need it.
struct FacePlane
{
    bool present = false;
    Point normal;
    // 0 where the normal is not defined (or not finite).
    double altitude = 0.0;
};

FacePlane planeOf(const CFaceO& face)
{
    FacePlane plane;
    if (!face.hasCorners())
        return plane;
    plane.present = true;
    const Point& a = face.v[0]->coord;
    const Point& b = face.v[1]->coord;
    const Point& c = face.v[2]->coord;
    const Point raw = (b - a).cross(c - a);
    const double longest = std::max((b - a).length(), std::max((c - b).length(), (a - c).length()));
    const double length = raw.length();
    if (!(length > 0.0) || !std::isfinite(length) || !std::isfinite(longest))
        return plane;
    plane.normal = raw * (1.0 / length);
    plane.altitude = length / longest;
    return plane;
}

double largestMagnitude(const Point& point)
{
    return std::max(std::abs(point[0]), std::max(std::abs(point[1]), std::abs(point[2])));
}

// Largest n . v over the unit vectors n within `angle` (cosine, sine) of the unit axis.
double largestDot(const Point& axis, double cosine, double sine, const Point& v)
{
    const double along = axis.dot(v);
    const double length = v.length();
    if (along >= length * cosine)
        return length;
    return along * cosine + axis.cross(v).length() * sine;
}

double smallestDot(const Point& axis, double cosine, double sine, const Point& v)
{
    return -largestDot(axis, cosine, sine, v * -1.0);
}

Point linearPart(const MeshCrossingBlocks::Matrix& m, const Point& p)
{
    return Point(m(0, 0) * p[0] + m(0, 1) * p[1] + m(0, 2) * p[2], m(1, 0) * p[0] + m(1, 1) * p[1] + m(1, 2) * p[2],
                 m(2, 0) * p[0] + m(2, 1) * p[1] + m(2, 2) * p[2]);
}

Point placed(const MeshCrossingBlocks::Matrix& m, const Point& p)
{
    return linearPart(m, p) + Point(m(0, 3), m(1, 3), m(2, 3));
}

} // namespace

MeshCrossingBlocks::MeshCrossingBlocks(const CMeshO& mesh) : faceCount(mesh.face.size())
{
    std::vector<FacePlane> planes(faceCount);
    for (std::size_t place = 0; place < faceCount; ++place) {
        planes[place] = planeOf(mesh.face[place]);
        if (planes[place].present) {
            for (const CVertexO* corner : mesh.face[place].v)
                localMagnitude = std::max(localMagnitude, largestMagnitude(corner->coord));
        }
    }
    for (std::size_t level = 0; faceCount > 0; ++level) {
        const std::size_t size = facesPerBlock(level);
        std::vector<Block> blocks((faceCount + size - 1) / size);
        for (std::size_t index = 0; index < blocks.size(); ++index) {
            Block& block = blocks[index];
            const std::size_t begin = index * size;
            const std::size_t end = std::min(begin + size, faceCount);
            std::fill(block.lower, block.lower + 3, std::numeric_limits<double>::max());
            std::fill(block.upper, block.upper + 3, -std::numeric_limits<double>::max());
            block.altitude = std::numeric_limits<double>::max();
            Point sum;
            std::size_t present = 0;
            for (std::size_t place = begin; place < end; ++place) {
                const FacePlane& plane = planes[place];
                if (!plane.present)
                    continue;
                ++present;
                for (const CVertexO* corner : mesh.face[place].v) {
                    for (int axis = 0; axis < 3; ++axis) {
                        block.lower[axis] = std::min(block.lower[axis], corner->coord[axis]);
                        block.upper[axis] = std::max(block.upper[axis], corner->coord[axis]);
                    }
                }
                block.altitude = std::min(block.altitude, plane.altitude);
                sum += plane.normal;
            }
            block.angle = present == 0 ? EmptyBlock : NoCone;
            const double sumLength = sum.length();
            if (present == 0 || !(block.altitude > 0.0) || !(sumLength > 1e-6 * static_cast<double>(present)))
                continue;
            const Point axis = sum * (1.0 / sumLength);
            double leastCosine = 1.0;
            for (std::size_t place = begin; place < end; ++place) {
                if (planes[place].present)
                    leastCosine = std::min(leastCosine, axis.dot(planes[place].normal));
            }
            std::copy(axis.data(), axis.data() + 3, block.axis);
            block.angle = std::acos(std::max(-1.0, leastCosine));
        }
        levels.push_back(std::move(blocks));
        if (levels.back().size() == 1)
            break;
    }
}

std::size_t MeshCrossingBlocks::facesPerBlock(std::size_t level)
{
    std::size_t size = BlockFaces;
    for (std::size_t i = 0; i < level; ++i)
        size *= BlockFaces;
    return size;
}

// The tolerances bound, with a wide berth, what rounding does to the caller's test: corners
// placed in the world frame, the normal computed from them, the two dot products.
bool MeshCrossingBlocks::makeFrame(const Matrix& complete, const Point& start, const Point& direction,
                                   double localMagnitude, Frame& frame)
{
    if (complete(3, 0) != 0.0 || complete(3, 1) != 0.0 || complete(3, 2) != 0.0 || complete(3, 3) != 1.0)
        return false;
    double gram[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            gram[i][j] = complete(0, i) * complete(0, j) + complete(1, i) * complete(1, j) + complete(2, i) * complete(2, j);
    }
    const double squaredScale = (gram[0][0] + gram[1][1] + gram[2][2]) / 3.0;
    if (!(squaredScale > 0.0) || !std::isfinite(squaredScale))
        return false;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const double expected = i == j ? squaredScale : 0.0;
            if (!(std::abs(gram[i][j] - expected) <= SimilarityTolerance * squaredScale))
                return false;
        }
    }
    const double directionLength = direction.length();
    if (!(directionLength > 0.0) || !std::isfinite(directionLength) || !std::isfinite(largestMagnitude(start)))
        return false;
    double linearNorm = 0.0;
    for (int row = 0; row < 3; ++row)
        linearNorm = std::max(linearNorm, std::abs(complete(row, 0)) + std::abs(complete(row, 1)) + std::abs(complete(row, 2)));
    const double worldMagnitude =
        linearNorm * localMagnitude + largestMagnitude(Point(complete(0, 3), complete(1, 3), complete(2, 3)));
    frame.complete = complete;
    frame.scale = std::sqrt(squaredScale);
    frame.start = start;
    frame.direction = direction;
    frame.localMagnitude = localMagnitude;
    frame.cornerError = 8.0 * Epsilon * worldMagnitude;
    frame.pointTolerance = 64.0 * Epsilon * (worldMagnitude + largestMagnitude(start)) + 2.0 * frame.cornerError;
    frame.directionTolerance = 16.0 * Epsilon * directionLength;
    // A ratio of the two that could vanish below the smallest double is no proof of a sign.
    return std::isfinite(frame.pointTolerance) && frame.pointTolerance / directionLength > 1e-250;
}

// Behind for certain: for every normal the block's faces may have in the world frame, the
// direction goes along it while every corner lies against it, or the other way round.
bool MeshCrossingBlocks::isBehind(const Block& block, const Frame& frame) const
{
    if (block.angle == EmptyBlock)
        return true;
    if (block.angle >= WidestCone || !(block.altitude > 0.0))
        return false;
    const double slack =
        1e-7 + 64.0 * (frame.cornerError + Epsilon * frame.scale * frame.localMagnitude) / (frame.scale * block.altitude);
    const double angle = block.angle + slack;
    if (!(angle < WidestCone))
        return false;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    Point axis = linearPart(frame.complete, Point(block.axis[0], block.axis[1], block.axis[2]));
    axis = axis * (1.0 / axis.length());

    double sign = 0.0;
    if (smallestDot(axis, cosine, sine, frame.direction) > frame.directionTolerance)
        sign = 1.0;
    else if (largestDot(axis, cosine, sine, frame.direction) < -frame.directionTolerance)
        sign = -1.0;
    else
        return false;
    for (int corner = 0; corner < 8; ++corner) {
        const Point local((corner & 1) ? block.upper[0] : block.lower[0], (corner & 2) ? block.upper[1] : block.lower[1],
                          (corner & 4) ? block.upper[2] : block.lower[2]);
        const Point towardsCorner = placed(frame.complete, local) - frame.start;
        const bool against = sign > 0.0 ? largestDot(axis, cosine, sine, towardsCorner) < -frame.pointTolerance
                                        : smallestDot(axis, cosine, sine, towardsCorner) > frame.pointTolerance;
        if (!against)
            return false;
    }
    return true;
}

} // namespace scene
} // namespace qel
