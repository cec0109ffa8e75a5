#include "pickbenchmark.h"

#include "benchoptions.h"
#include "benchreport.h"
#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/meshmodel.h"
#include "module_scene/scenevcgmodel.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

namespace {

using qel::scene::CFaceO;
using qel::scene::SceneVCGModel;
typedef SceneVCGModel::Point Point;
typedef SceneVCGModel::Line Line;

const double PI = 3.14159265358979323846;
const double Radius = 50.0;
const double Bump = 1.5;

struct Options
{
    long long triangles = 2000000;
    int rays = 10000;
    int sample = 200;
    bool bySlices = false;
    QString json;
};

bool parseOptions(int argc, char** argv, Options& options)
{
    BenchOptions parsed({{"triangles", "2000000"}, {"rays", "10000"}, {"sample", "200"}, {"order", "stacks"}});
    if (!parsed.parse(argc, argv))
        return false;
    options.triangles = parsed.number("triangles");
    options.rays = static_cast<int>(parsed.number("rays"));
    options.sample = static_cast<int>(parsed.number("sample"));
    options.bySlices = parsed.text("order") == "slices";
    options.json = parsed.text("json");
    const bool knownOrder = options.bySlices || parsed.text("order") == "stacks";
    return knownOrder && options.triangles >= 8 && options.rays >= 1 && options.sample >= 1;
}

// The surface's distance from the centre in a direction: a sphere with gentle ripples, as
// scanned objects have; never farther out than Radius + Bump.
double surfaceRadius(double polar, double azimuth)
{
    return Radius + Bump * std::sin(9.0 * polar) * std::cos(7.0 * azimuth);
}

// Rings of slices vertices between two pole vertices, fans at the poles and two triangles
// per cell between rings. Stored ring by ring from the north pole (stacks), or slice by
// slice from pole to pole (slices).
qel::scene::MeshModel* buildBumpySphere(long long wantedTriangles, bool bySlices)
{
    const int stacks = static_cast<int>(std::ceil(std::sqrt(wantedTriangles / 4.0))) + 1;
    const int slices = static_cast<int>(wantedTriangles / (2LL * (stacks - 1)));
    auto* model = new qel::scene::MeshModel;
    qel::scene::CMeshO& mesh = model->cm;
    const std::size_t columns = static_cast<std::size_t>(slices);
    const std::size_t south = 1 + static_cast<std::size_t>(stacks - 1) * columns;
    qel::scene::MeshAllocator::addVertices(mesh, south + 1);
    mesh.vert[0].coord = Point(0.0, 0.0, surfaceRadius(0.0, 0.0));
    mesh.vert[south].coord = Point(0.0, 0.0, -surfaceRadius(PI, 0.0));
    for (int stack = 1; stack < stacks; ++stack) {
        const double polar = PI * stack / stacks;
        for (int slice = 0; slice < slices; ++slice) {
            const double azimuth = 2.0 * PI * slice / slices;
            const double r = surfaceRadius(polar, azimuth);
            mesh.vert[1 + static_cast<std::size_t>(stack - 1) * columns + static_cast<std::size_t>(slice)].coord =
                Point(r * std::sin(polar) * std::cos(azimuth), r * std::sin(polar) * std::sin(azimuth),
                      r * std::cos(polar));
        }
    }
    qel::scene::MeshAllocator::addFaces(mesh, 2ULL * static_cast<std::size_t>(stacks - 1) * columns);
    auto ring = [&](int stack, int slice) {
        return &mesh.vert[1 + static_cast<std::size_t>(stack - 1) * columns + static_cast<std::size_t>(slice % slices)];
    };
    std::size_t face = 0;
    auto addFace = [&](qel::scene::CVertexO* a, qel::scene::CVertexO* b, qel::scene::CVertexO* c) {
        CFaceO& added = mesh.face[face++];
        added.v[0] = a;
        added.v[1] = b;
        added.v[2] = c;
    };
    // Cells hang below their stack; stack 0 is the north fan, stack - 1 the south fan.
    auto addCell = [&](int stack, int slice) {
        if (stack == 0) {
            addFace(&mesh.vert[0], ring(1, slice), ring(1, slice + 1));
        } else if (stack == stacks - 1) {
            addFace(ring(stack, slice), &mesh.vert[south], ring(stack, slice + 1));
        } else {
            addFace(ring(stack, slice), ring(stack + 1, slice), ring(stack + 1, slice + 1));
            addFace(ring(stack, slice), ring(stack + 1, slice + 1), ring(stack, slice + 1));
        }
    };
    if (bySlices) {
        for (int slice = 0; slice < slices; ++slice) {
            for (int stack = 0; stack < stacks; ++stack)
                addCell(stack, slice);
        }
    } else {
        for (int stack = 0; stack < stacks; ++stack) {
            for (int slice = 0; slice < slices; ++slice)
                addCell(stack, slice);
        }
    }
    qel::scene::MeshBounds::update(mesh);
    model->busy = false;
    return model;
}

Point randomDirection(std::mt19937& random)
{
    std::normal_distribution<double> normal;
    Point direction(normal(random), normal(random), normal(random));
    return direction.normalize();
}

// From far outside towards a point deep inside the surface.
std::vector<Line> hittingRays(int count, std::mt19937& random)
{
    std::uniform_real_distribution<double> depth(0.0, 0.5 * (Radius - Bump));
    std::vector<Line> rays;
    for (int i = 0; i < count; ++i)
        rays.push_back(Line{randomDirection(random) * (3.0 * Radius), randomDirection(random) * depth(random)});
    return rays;
}

// Lines through a point of the mesh's box that stay farther from the centre than the surface
// ever comes: they meet the box but not the surface.
std::vector<Line> missingRays(int count, const qel::scene::Box3d& box, std::mt19937& random)
{
    const double outer = Radius + Bump;
    std::uniform_real_distribution<double> x(box.min.x(), box.max.x());
    std::uniform_real_distribution<double> y(box.min.y(), box.max.y());
    std::uniform_real_distribution<double> z(box.min.z(), box.max.z());
    std::vector<Line> rays;
    while (static_cast<int>(rays.size()) < count) {
        const Point through(x(random), y(random), z(random));
        const Point direction = randomDirection(random);
        const Point nearest = through - direction * through.dot(direction);
        if (nearest.length() <= outer * 1.001)
            continue;
        rays.push_back(Line{through - direction * (3.0 * Radius), through});
    }
    return rays;
}

// What one pick answered.
struct Answer
{
    bool hit = false;
    const CFaceO* face = nullptr;
    Point point;
    double distance = 0.0;

    bool sameBits(const Answer& other) const
    {
        return hit == other.hit && face == other.face && std::memcmp(&point, &other.point, sizeof point) == 0
               && std::memcmp(&distance, &other.distance, sizeof distance) == 0;
    }
};

struct Timing
{
    double microsecondsPerRay = 0.0;
    int hits = 0;
    std::vector<Answer> answers;
};

template <class Pick>
Timing timeRays(const std::vector<Line>& rays, std::size_t count, Pick pick)
{
    Timing timing;
    count = std::min(count, rays.size());
    timing.answers.resize(count);
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < count; ++i) {
        Answer& answer = timing.answers[i];
        answer.hit = pick(rays[i], &answer.face, answer.point, answer.distance);
    }
    timing.microsecondsPerRay = BenchOptions::secondsSince(start) * 1e6 / static_cast<double>(count);
    for (const Answer& answer : timing.answers)
        timing.hits += answer.hit ? 1 : 0;
    return timing;
}

// Both paths on the same rays: the face, point and distance must be the same, bit for bit.
int countDisagreements(const Timing& tree, const Timing& walk)
{
    int disagreements = 0;
    for (std::size_t i = 0; i < walk.answers.size() && i < tree.answers.size(); ++i)
        disagreements += tree.answers[i].sameBits(walk.answers[i]) ? 0 : 1;
    return disagreements;
}

} // namespace

int runPickBenchmark(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: qel-bench pick [--triangles N] [--rays N] [--sample N] [--order stacks|slices] "
                             "[--json FILE]\n");
        return 2;
    }
    const qel::util::ZPointer<SceneVCGModel> model(
        new SceneVCGModel(buildBumpySphere(options.triangles, options.bySlices), "sphere"));

    const auto buildStart = std::chrono::steady_clock::now();
    if (!model->preparePickTree()) {
        std::fprintf(stderr, "qel-bench pick: the model has no pick tree\n");
        return 1;
    }
    const double buildSeconds = BenchOptions::secondsSince(buildStart);

    std::mt19937 random(20240611);
    const std::vector<Line> hits = hittingRays(options.rays, random);
    const std::vector<Line> misses = missingRays(options.rays, model->getMeshModel()->cm.bbox, random);
    const std::size_t all = static_cast<std::size_t>(options.rays);
    const std::size_t sample = static_cast<std::size_t>(options.sample);

    auto accelerated = [&](const Line& line, const CFaceO** face, Point& point, double& distance) {
        return model->intersectFacesAccelerated(line, face, point, distance, false);
    };
    auto brute = [&](const Line& line, const CFaceO** face, Point& point, double& distance) {
        return model->intersectFaces(line, face, point, distance, false);
    };
    const Timing hitTree = timeRays(hits, all, accelerated);
    const Timing missTree = timeRays(misses, all, accelerated);
    const Timing hitWalk = timeRays(hits, sample, brute);
    const Timing missWalk = timeRays(misses, sample, brute);
    const int disagreements = countDisagreements(hitTree, hitWalk) + countDisagreements(missTree, missWalk);

    BenchReport report(QStringLiteral("pick: %1 triangles stored by %2, %3 rays of each kind through the tree, %4 "
                                      "through the walk")
                           .arg(model->getMeshModel()->cm.fn)
                           .arg(options.bySlices ? "slices" : "stacks")
                           .arg(options.rays)
                           .arg(options.sample));
    report.add("triangles", model->getMeshModel()->cm.fn);
    report.add("bvh_build_s", buildSeconds, "s");
    report.add("hit_us_accel", hitTree.microsecondsPerRay, "us/ray");
    report.add("hit_us_brute", hitWalk.microsecondsPerRay, "us/ray");
    report.add("miss_us_accel", missTree.microsecondsPerRay, "us/ray");
    report.add("miss_us_brute", missWalk.microsecondsPerRay, "us/ray");
    report.add("hit_speedup", hitWalk.microsecondsPerRay / hitTree.microsecondsPerRay, "x");
    report.add("miss_speedup", missWalk.microsecondsPerRay / missTree.microsecondsPerRay, "x");
    report.add("hits_of_hitting_rays", hitTree.hits);
    report.add("hits_of_missing_rays", missTree.hits);
    report.add("disagreements", disagreements);
    report.print();
    if (!options.json.isEmpty() && !report.writeJson(options.json))
        return 1;
    return hitTree.hits == options.rays && missTree.hits == 0 && disagreements == 0 ? 0 : 1;
}
