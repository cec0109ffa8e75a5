// The pick tree: its searches visit every face a ray can hit, its depth stays bounded, and a
// model's picks through it give exactly the answers of the walk over all faces (face, point
// and the odd distance, bit for bit) on many random rays, grazing ones and misses included,
// also after the mesh changed under it.
#include "meshfixtures.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshbvh.h"
#include "module_scene/mesh/meshcrossingblocks.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/meshtopology.h"
#include "module_scene/mesh/meshtransform.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenevcgmodel.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <sstream>

namespace qel {
namespace test {
namespace {

using scene::CFaceO;
using scene::CMeshO;
using scene::MeshBVH;
using scene::MeshCrossingBlocks;
using scene::MeshModel;
using scene::SceneVCGModel;
typedef util::ZPointer<SceneVCGModel> ModelPointer;
typedef SceneVCGModel::Line Line;
typedef scene::SceneElement::Matrix4 Matrix4;

const double Pi = 3.14159265358979323846;

// ---------------------------------------------------------------------------------------
// Meshes

// A closed sphere with pole fans and shared vertices.
void buildSphere(CMeshO& mesh, int slices, int stacks)
{
    std::vector<Point> points{Point(0.0, 0.0, 1.0)};
    for (int stack = 1; stack < stacks; ++stack) {
        const double polar = Pi * stack / stacks;
        for (int slice = 0; slice < slices; ++slice) {
            const double azimuth = 2.0 * Pi * slice / slices;
            points.push_back(Point(std::sin(polar) * std::cos(azimuth), std::sin(polar) * std::sin(azimuth),
                                   std::cos(polar)));
        }
    }
    points.push_back(Point(0.0, 0.0, -1.0));
    const int south = static_cast<int>(points.size()) - 1;
    auto ring = [slices](int stack, int slice) { return 1 + (stack - 1) * slices + (slice % slices); };
    std::vector<Triangle> triangles;
    for (int slice = 0; slice < slices; ++slice) {
        triangles.push_back({0, ring(1, slice), ring(1, slice + 1)});
        for (int stack = 1; stack + 1 < stacks; ++stack) {
            triangles.push_back({ring(stack, slice), ring(stack + 1, slice), ring(stack + 1, slice + 1)});
            triangles.push_back({ring(stack, slice), ring(stack + 1, slice + 1), ring(stack, slice + 1)});
        }
        triangles.push_back({south, ring(stacks - 1, slice + 1), ring(stacks - 1, slice)});
    }
    buildMesh(mesh, points, triangles);
}

// A height field over [0, n]^2 whose left half is flat (coplanar faces for grazing rays),
// with a few of its faces repeated at the end (exact ties between faces).
void buildTerrain(CMeshO& mesh, int n)
{
    std::vector<Point> points;
    for (int y = 0; y <= n; ++y) {
        for (int x = 0; x <= n; ++x) {
            const double height = x < n / 2 ? 0.0 : 0.25 * std::sin(x * 0.7) * std::cos(y * 0.9);
            points.push_back(Point(x, y, height));
        }
    }
    std::vector<Triangle> triangles;
    auto at = [n](int x, int y) { return y * (n + 1) + x; };
    for (int y = 0; y < n; ++y) {
        for (int x = 0; x < n; ++x) {
            triangles.push_back({at(x, y), at(x + 1, y), at(x + 1, y + 1)});
            triangles.push_back({at(x, y), at(x + 1, y + 1), at(x, y + 1)});
        }
    }
    for (int repeat = 0; repeat < 40; repeat += 7)
        triangles.push_back(triangles[static_cast<std::size_t>(repeat)]);
    buildMesh(mesh, points, triangles);
}

// Overlapping random triangles of all sizes, some of them degenerate or repeated.
void buildSoup(CMeshO& mesh, int count, std::mt19937& random)
{
    std::uniform_real_distribution<double> coordinate(-3.0, 3.0);
    std::uniform_real_distribution<double> size(0.001, 2.0);
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    for (int i = 0; i < count; ++i) {
        const Point base(coordinate(random), coordinate(random), coordinate(random));
        const double s = size(random);
        const Point u(coordinate(random) * s, coordinate(random) * s, coordinate(random) * s);
        const Point v = i % 17 == 0 ? u * 2.0 : Point(coordinate(random) * s, coordinate(random) * s,
                                                      coordinate(random) * s);
        const int first = static_cast<int>(points.size());
        points.insert(points.end(), {base, base + u, base + v});
        triangles.push_back({first, first + 1, first + 2});
        if (i % 23 == 0)
            triangles.push_back({first, first + 1, first + 2});
    }
    buildMesh(mesh, points, triangles);
}

ModelPointer makeModel(void (*build)(CMeshO&, std::mt19937&), std::mt19937& random)
{
    auto* mesh = new MeshModel;
    build(mesh->cm, random);
    scene::MeshNormals::updateVertexAndFaceNormals(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    mesh->busy = false;
    return ModelPointer(new SceneVCGModel(mesh, "model"));
}

void sphere(CMeshO& mesh, std::mt19937&)
{
    buildSphere(mesh, 24, 16);
}

void terrain(CMeshO& mesh, std::mt19937&)
{
    buildTerrain(mesh, 24);
}

void soup(CMeshO& mesh, std::mt19937& random)
{
    buildSoup(mesh, 400, random);
}

// ---------------------------------------------------------------------------------------
// Rays

Point worldOf(const Matrix4& m, const Point& p)
{
    return Point(m(0, 0) * p[0] + m(0, 1) * p[1] + m(0, 2) * p[2] + m(0, 3),
                 m(1, 0) * p[0] + m(1, 1) * p[1] + m(1, 2) * p[2] + m(1, 3),
                 m(2, 0) * p[0] + m(2, 1) * p[1] + m(2, 2) * p[2] + m(2, 3));
}

// Random rays around and through the model, and rays aimed at its vertices, along its edges
// and through their middles, parallel to the axes, from inside, and without direction.
std::vector<Line> raysFor(SceneVCGModel* model, int randomCount, std::mt19937& random)
{
    const CMeshO& mesh = model->getMeshModel()->cm;
    const Matrix4 complete = model->getCompleteTransformMatrix();
    const Point centre = worldOf(complete, mesh.bbox.center());
    const double reach = (mesh.bbox.max - mesh.bbox.min).length() * model->getScalingFactor() + 1.0;
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    auto around = [&](double factor) {
        return centre + Point(unit(random), unit(random), unit(random)) * (reach * factor);
    };
    std::uniform_int_distribution<std::size_t> anyFace(0, mesh.face.size() - 1);
    std::vector<Line> rays;
    for (int i = 0; i < randomCount; ++i)
        rays.push_back(Line{around(2.0), around(0.5)});
    for (int i = 0; i < randomCount / 4; ++i) {
        const CFaceO& face = mesh.face[anyFace(random)];
        const Point a = worldOf(complete, face.v[0]->coord);
        const Point b = worldOf(complete, face.v[1]->coord);
        rays.push_back(Line{around(2.0), a});
        rays.push_back(Line{a + (a - b) * 3.0, b});
        rays.push_back(Line{around(2.0), (a + b) * 0.5});
        rays.push_back(Line{centre, around(1.0)});
        const Point start = around(2.0);
        rays.push_back(Line{start, Point(start.x(), start.y(), a.z())});
        rays.push_back(Line{Point(start.x(), a.y(), a.z()), Point(a.x(), a.y(), a.z())});
        rays.push_back(Line{a, a});
    }
    return rays;
}

std::string describe(const Line& line)
{
    std::ostringstream text;
    text.precision(17);
    text << "(" << line.start.x() << ", " << line.start.y() << ", " << line.start.z() << ") -> (" << line.end.x()
         << ", " << line.end.y() << ", " << line.end.z() << ")";
    return text.str();
}

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameBits(const SceneVCGModel::Point& a, const SceneVCGModel::Point& b)
{
    return sameBits(a.x(), b.x()) && sameBits(a.y(), b.y()) && sameBits(a.z(), b.z());
}

// Both paths from the same starting values; returns the number of hits.
int expectSameAnswers(SceneVCGModel* model, const std::vector<Line>& rays)
{
    int hits = 0;
    for (const Line& line : rays) {
        for (bool snap : {false, true}) {
            const CFaceO* walked = reinterpret_cast<const CFaceO*>(0x1);
            const CFaceO* searched = walked;
            SceneVCGModel::Point walkedPoint(7.0, 8.0, 9.0);
            SceneVCGModel::Point searchedPoint = walkedPoint;
            double walkedDistance = -3.0;
            double searchedDistance = walkedDistance;
            const bool walkHit = model->intersectFaces(line, &walked, walkedPoint, walkedDistance, snap);
            const bool searchHit =
                model->intersectFacesAccelerated(line, &searched, searchedPoint, searchedDistance, snap);
            EXPECT_EQ(walkHit, searchHit) << describe(line);
            EXPECT_EQ(walked, searched) << describe(line);
            EXPECT_TRUE(sameBits(walkedPoint, searchedPoint)) << describe(line);
            EXPECT_TRUE(sameBits(walkedDistance, searchedDistance))
                << describe(line) << ": " << walkedDistance << " vs " << searchedDistance;
            hits += walkHit && !snap ? 1 : 0;
        }
    }
    return hits;
}

Matrix4 turnedAndMoved()
{
    const double c = std::cos(0.7);
    const double s = std::sin(0.7);
    Matrix4 m = Matrix4::identity();
    m(0, 0) = c;
    m(0, 1) = -s;
    m(1, 0) = s;
    m(1, 1) = c;
    m(0, 3) = 1250.5;
    m(1, 3) = -30.25;
    m(2, 3) = 7.0;
    return m;
}

} // namespace

TEST(MeshBVH, VisitsEveryFaceWhoseBoxTheRayMeets)
{
    std::mt19937 random(7);
    CMeshO mesh;
    buildSoup(mesh, 2000, random);
    const MeshBVH tree(mesh);
    ASSERT_TRUE(tree.isUsable());
    EXPECT_EQ(mesh.face.size(), tree.getFaceCount());
    EXPECT_LE(tree.getDepth(), MeshBVH::MaxDepth);

    std::uniform_real_distribution<double> unit(-6.0, 6.0);
    for (int i = 0; i < 300; ++i) {
        const Point origin(unit(random), unit(random), unit(random));
        Point direction(unit(random), unit(random), unit(random));
        if (i % 5 == 0)
            direction[i % 3] = 0.0;
        std::set<std::uint32_t> visited;
        tree.traverse(origin, direction, 1e-9, [&](std::uint32_t place) {
            visited.insert(place);
            return std::numeric_limits<double>::max();
        });
        for (std::size_t place = 0; place < mesh.face.size(); ++place) {
            // The face's box against the ray, by the slabs (the tree's boxes grew a little, for
            // rounding).
            double near = 0.0;
            double far = std::numeric_limits<double>::max();
            bool meets = true;
            for (int axis = 0; axis < 3 && meets; ++axis) {
                double lower = mesh.face[place].v[0]->coord[axis];
                double upper = lower;
                for (const scene::CVertexO* corner : mesh.face[place].v) {
                    lower = std::min(lower, corner->coord[axis]);
                    upper = std::max(upper, corner->coord[axis]);
                }
                if (direction[axis] == 0.0) {
                    meets = origin[axis] >= lower && origin[axis] <= upper;
                    continue;
                }
                double a = (lower - origin[axis]) / direction[axis];
                double b = (upper - origin[axis]) / direction[axis];
                if (a > b)
                    std::swap(a, b);
                near = std::max(near, a);
                far = std::min(far, b);
                meets = near <= far;
            }
            if (meets) {
                EXPECT_TRUE(visited.count(static_cast<std::uint32_t>(place))) << "face " << place << " ray " << i;
            }
        }
    }
}

TEST(MeshBVH, StaysShallowOnDegenerateInputAndRefusesCoordinatesThatAreNotFinite)
{
    // Thousands of faces with one centre: no split by position is possible.
    CMeshO same;
    std::vector<Triangle> triangles(5000, Triangle{0, 1, 2});
    buildMesh(same, {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0)}, triangles);
    const MeshBVH tree(same);
    EXPECT_TRUE(tree.isUsable());
    EXPECT_LE(tree.getDepth(), MeshBVH::MaxDepth);
    std::size_t visits = 0;
    tree.traverse(Point(0.2, 0.2, 1.0), Point(0.0, 0.0, -1.0), 0.0, [&](std::uint32_t) {
        ++visits;
        return std::numeric_limits<double>::max();
    });
    EXPECT_EQ(5000u, visits);

    // Faces without corners are left out; an empty mesh gives an empty tree.
    CMeshO empty;
    const MeshBVH none(empty);
    EXPECT_TRUE(none.isUsable());
    EXPECT_EQ(0u, none.getNodeCount());
    none.traverse(Point(), Point(1.0, 0.0, 0.0), 0.0, [](std::uint32_t) -> double {
        ADD_FAILURE() << "an empty tree has no faces";
        return 0.0;
    });

    CMeshO broken;
    buildSquare(broken);
    broken.vert[2].coord[1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(MeshBVH(broken).isUsable());
}

TEST(MeshCrossingBlocks, LeaveOutOnlyFacesWhosePlanesLieBehindTheRay)
{
    CMeshO mesh;
    buildSphere(mesh, 256, 192);
    const MeshCrossingBlocks blocks(mesh);
    EXPECT_EQ(mesh.face.size(), blocks.getFaceCount());
    EXPECT_EQ(4u, blocks.getLevelCount());

    // The plane test of the caller, in a frame that places the mesh by m.
    auto crossesAhead = [&mesh](const Matrix4& m, const Line& line, std::size_t place) {
        const CFaceO& face = mesh.face[place];
        Point normal;
        return !(SceneVCGModel::planeCrossing(worldOf(m, face.v[0]->coord), worldOf(m, face.v[1]->coord),
                                              worldOf(m, face.v[2]->coord), line, normal)
                 < 0.0);
    };
    Matrix4 stretched = Matrix4::identity();
    stretched(0, 0) = 3.0;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (const Matrix4& placement : {Matrix4::identity(), turnedAndMoved(), stretched}) {
        const Point centre = worldOf(placement, Point());
        std::size_t walked = 0;
        std::size_t offered = 0;
        for (int i = 0; i < 600; ++i) {
            // Random rays, and rays rising beside the sphere: those leave the planes of the
            // south cap, stored last, behind them.
            const Point start = centre + Point(unit(random), unit(random), unit(random) / 8.0) * 4.0;
            const Point end = i % 3 == 0   ? centre + Point(unit(random), unit(random), unit(random)) * 0.5
                              : i % 3 == 1 ? start + Point(unit(random), unit(random), unit(random))
                                           : start + Point(unit(random) / 4.0, unit(random) / 4.0, 1.0);
            const Line line{start, end};
            std::size_t expected = mesh.face.size();
            for (std::size_t place = mesh.face.size(); place-- > 0;) {
                ++walked;
                if (crossesAhead(placement, line, place)) {
                    expected = place;
                    break;
                }
            }
            std::size_t found = mesh.face.size();
            const bool any = blocks.findLast(placement, line.start, line.end - line.start, [&](std::size_t place) {
                ++offered;
                if (!crossesAhead(placement, line, place))
                    return false;
                found = place;
                return true;
            });
            EXPECT_EQ(expected != mesh.face.size(), any);
            EXPECT_EQ(expected, found) << describe(line);
        }
        // Where the placement turns and scales alike the blocks save work; a stretch leaves
        // every face to the caller.
        if (placement == stretched)
            EXPECT_EQ(walked, offered);
        else
            EXPECT_LT(offered * 2, walked);
    }
}

TEST(MeshBVH, ModelPicksThroughTheTreeEqualTheWalkOverAllFaces)
{
    std::mt19937 random(2024);
    for (auto build : {&sphere, &terrain, &soup}) {
        const ModelPointer model = makeModel(build, random);
        EXPECT_TRUE(model->preparePickTree());
        const int hits = expectSameAnswers(model.get(), raysFor(model.get(), 1200, random));
        // The rays are meant to hit as well as to miss.
        EXPECT_GT(hits, 300);

        // Turned, moved far away and scaled: the tree is searched in the mesh's frame.
        model->setTransformMatrix(turnedAndMoved());
        model->setScalingFactor(2.5);
        expectSameAnswers(model.get(), raysFor(model.get(), 600, random));

        Matrix4 stretched = turnedAndMoved();
        stretched(2, 2) = 0.25;
        model->setTransformMatrix(stretched);
        expectSameAnswers(model.get(), raysFor(model.get(), 300, random));

        // Deleted faces are skipped without a new tree.
        for (std::size_t place = 0; place < model->getMeshModel()->cm.face.size(); place += 3)
            model->getMeshModel()->cm.face[place].setDeleted();
        expectSameAnswers(model.get(), raysFor(model.get(), 600, random));
    }
}

TEST(MeshBVH, ModelPicksFollowChangesOfTheMesh)
{
    std::mt19937 random(99);
    const ModelPointer model = makeModel(&terrain, random);
    CMeshO& mesh = model->getMeshModel()->cm;
    const std::vector<Line> rays = raysFor(model.get(), 300, random);
    expectSameAnswers(model.get(), rays);

    // Moved vertices with a new box are noticed by themselves.
    scene::MeshTransform::apply(mesh, Matrix4::translation(0.5, 0.25, 0.0));
    scene::MeshBounds::update(mesh);
    expectSameAnswers(model.get(), rays);

    // A change inside the box (its extremes stay) is told through the render lock, or
    // directly.
    const scene::Box3d box = mesh.bbox;
    auto foldInside = [&mesh]() {
        for (scene::CVertexO& vertex : mesh.vert) {
            if (std::abs(vertex.coord.z()) < 0.15)
                vertex.coord.z() = -vertex.coord.z();
        }
        scene::MeshBounds::update(mesh);
    };
    foldInside();
    ASSERT_TRUE(box == mesh.bbox);
    model->setRenderLock(true);
    model->setRenderLock(false);
    expectSameAnswers(model.get(), rays);
    foldInside();
    model->meshChanged();
    expectSameAnswers(model.get(), rays);

    // Compaction moves faces to other places.
    for (std::size_t place = 0; place < mesh.face.size(); place += 2) {
        mesh.face[place].setDeleted();
        --mesh.fn;
    }
    scene::MeshAllocator::compactFaces(mesh);
    expectSameAnswers(model.get(), rays);

    // A coordinate that is not finite leaves the walk to answer.
    mesh.vert[3].coord.x() = std::numeric_limits<double>::infinity();
    model->meshChanged();
    EXPECT_FALSE(model->preparePickTree());
    expectSameAnswers(model.get(), rays);
}

} // namespace test
} // namespace qel
