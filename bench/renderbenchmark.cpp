#include "renderbenchmark.h"

#include "app/xvfblauncher.h"
#include "benchoptions.h"
#include "benchreport.h"
#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/meshrenderer.h"

#include <QGuiApplication>
#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <GL/glu.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

const double PI = 3.14159265358979323846;
const int Width = 1024;
const int Height = 768;

struct Options
{
    long long triangles = 2000000;
    int frames = 5;
    QString json;
};

bool parseOptions(int argc, char** argv, Options& options)
{
    BenchOptions parsed({{"triangles", "2000000"}, {"frames", "5"}});
    if (!parsed.parse(argc, argv))
        return false;
    options.triangles = parsed.number("triangles");
    options.frames = static_cast<int>(parsed.number("frames"));
    options.json = parsed.text("json");
    return options.triangles >= 8 && options.frames >= 1;
}

// A torus of rings x segments quads, two triangles each, filling most of the view.
void buildTorus(qel::scene::CMeshO& mesh, long long wantedTriangles)
{
    const int rings = static_cast<int>(std::ceil(std::sqrt(wantedTriangles / 2.0)));
    const int segments = static_cast<int>(wantedTriangles / (2LL * rings));
    const double major = 55.0;
    const double minor = 22.0;
    qel::scene::MeshAllocator::addVertices(mesh, static_cast<std::size_t>(rings) * segments);
    for (int ring = 0; ring < rings; ++ring) {
        const double u = 2.0 * PI * ring / rings;
        for (int segment = 0; segment < segments; ++segment) {
            const double v = 2.0 * PI * segment / segments;
            const double radius = major + minor * std::cos(v);
            mesh.vert[static_cast<std::size_t>(ring) * segments + segment].coord =
                qel::scene::CVertexO::Point(radius * std::cos(u), radius * std::sin(u), minor * std::sin(v));
        }
    }
    qel::scene::MeshAllocator::addFaces(mesh, 2ULL * rings * segments);
    std::size_t face = 0;
    auto corner = [&](int ring, int segment) {
        return &mesh.vert[static_cast<std::size_t>(ring % rings) * segments + static_cast<std::size_t>(segment % segments)];
    };
    for (int ring = 0; ring < rings; ++ring) {
        for (int segment = 0; segment < segments; ++segment) {
            qel::scene::CFaceO& first = mesh.face[face++];
            first.v[0] = corner(ring, segment);
            first.v[1] = corner(ring + 1, segment);
            first.v[2] = corner(ring + 1, segment + 1);
            qel::scene::CFaceO& second = mesh.face[face++];
            second.v[0] = corner(ring, segment);
            second.v[1] = corner(ring + 1, segment + 1);
            second.v[2] = corner(ring, segment + 1);
        }
    }
    qel::scene::MeshNormals::updateVertexAndFaceNormals(mesh);
}

// The state of a scene view's frame: perspective of 45 degrees, the model 200 units ahead,
// lit by the default light, coloured through the colour material.
void beginFrame()
{
    glViewport(0, 0, Width, Height);
    glClearColor(0.3f, 0.3f, 0.3f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45.0, static_cast<double>(Width) / Height, 1.0, 1000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(0.0f, 0.0f, -200.0f);
    glRotatef(30.0f, 1.0f, 0.0f, 0.0f);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glShadeModel(GL_SMOOTH);
    glColor3f(1.0f, 1.0f, 1.0f);
}

double drawFrame(qel::scene::MeshRenderer& renderer)
{
    const auto start = std::chrono::steady_clock::now();
    beginFrame();
    renderer.draw(qel::scene::MeshRenderer::DRAW_SMOOTH, qel::scene::MeshRenderer::COLOR_PER_MESH,
                  qel::scene::MeshRenderer::TEXTURE_NONE);
    glFinish();
    return BenchOptions::secondsSince(start);
}

// Frames per second from the median frame: the machine may be busy with other work.
double framesPerSecond(std::vector<double> frameTimes)
{
    std::sort(frameTimes.begin(), frameTimes.end());
    const std::size_t middle = frameTimes.size() / 2;
    const double median = frameTimes.size() % 2 ? frameTimes[middle]
                                                : 0.5 * (frameTimes[middle - 1] + frameTimes[middle]);
    return 1.0 / median;
}

} // namespace

int runRenderBenchmark(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: qel-bench render [--triangles N] [--frames N] [--json FILE]\n");
        return 2;
    }
    // Mesa's OpenGL needs an X server: without a display the benchmark brings its own.
    XvfbLauncher xvfb;
    QString error;
    if (!QCoreApplication::instance() && !xvfb.ensureDisplay(&error)) {
        std::fprintf(stderr, "qel-bench render: %s\n", qPrintable(error));
        return 1;
    }
    std::unique_ptr<QGuiApplication> application;
    if (!QCoreApplication::instance())
        application.reset(new QGuiApplication(argc, argv));

    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        std::fprintf(stderr, "qel-bench render: no OpenGL context\n");
        return 1;
    }
    QOpenGLFramebufferObject frameBuffer(Width, Height, QOpenGLFramebufferObject::Depth);
    frameBuffer.bind();

    std::printf("building a torus of about %lld triangles...\n", options.triangles);
    std::fflush(stdout);
    qel::scene::CMeshO mesh;
    buildTorus(mesh, options.triangles);

    // The model's path compiles the drawing once into a list and calls it from then on; the
    // plain path sends every vertex each frame. Their frames alternate, so that both meet the
    // same load of the machine.
    qel::scene::MeshRenderer listed;
    listed.setMesh(&mesh);
    listed.setHints(qel::scene::MeshRenderer::HINT_USE_DISPLAY_LIST | qel::scene::MeshRenderer::HINT_CALLER_NORMALS);
    qel::scene::MeshRenderer immediate;
    immediate.setMesh(&mesh);
    immediate.setHints(qel::scene::MeshRenderer::HINT_CALLER_NORMALS);

    const double firstListFrame = drawFrame(listed);
    if (frameBuffer.toImage().pixelColor(Width / 2, Height / 4) == QColor(77, 77, 77))
        std::fprintf(stderr, "qel-bench render: the model did not reach the frame\n");
    std::vector<double> listTimes;
    std::vector<double> immediateTimes;
    for (int frame = 0; frame < options.frames; ++frame) {
        listTimes.push_back(drawFrame(listed));
        immediateTimes.push_back(drawFrame(immediate));
    }
    const double listFps = framesPerSecond(listTimes);
    const double immediateFps = framesPerSecond(immediateTimes);
    // The first frame built the list and called it once.
    const double listBuild = std::max(0.0, firstListFrame - 1.0 / listFps);

    BenchReport report(QStringLiteral("render: %1 triangles in %2x%3, %4 frames each (%5)")
                           .arg(mesh.fn)
                           .arg(Width)
                           .arg(Height)
                           .arg(options.frames)
                           .arg(QString::fromLatin1(reinterpret_cast<const char*>(glGetString(GL_RENDERER)))));
    report.add("triangles", mesh.fn);
    report.add("fps_display_list", listFps, "frames/s");
    report.add("fps_immediate", immediateFps, "frames/s");
    report.add("list_build_s", listBuild, "s");
    report.print();

    // The list goes with the context that made it.
    listed.setMesh(nullptr);
    frameBuffer.release();
    const bool written = options.json.isEmpty() || report.writeJson(options.json);
    return written ? 0 : 1;
}
