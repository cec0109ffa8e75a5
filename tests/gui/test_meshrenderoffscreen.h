#pragma once

#include "mesh/meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"

#include <QColor>
#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <memory>
#include <qopengl.h>

namespace qel {
namespace test {

// A pixel of the frame to look at.
struct Probe
{
    int x;
    int y;
};

// A GL context on an off-screen surface drawing into a square frame buffer object, with an
// orthographic view of [-1, 1]^2 and lighting off; pixels are read back as an image.
class OffscreenTarget
{
public:
    static const int SIZE = 64;

    OffscreenTarget()
    {
        surface.create();
        context.setShareContext(QOpenGLContext::globalShareContext());
        context.create();
        makeCurrent();
        QOpenGLFramebufferObjectFormat format;
        format.setAttachment(QOpenGLFramebufferObject::Depth);
        frameBuffer.reset(new QOpenGLFramebufferObject(SIZE, SIZE, format));
        frameBuffer->bind();
        clear();
    }
    ~OffscreenTarget()
    {
        makeCurrent();
        frameBuffer.reset();
        context.doneCurrent();
    }

    bool isValid() const { return context.isValid() && frameBuffer && frameBuffer->isValid(); }
    QOpenGLContext* glContext() { return &context; }

    void makeCurrent()
    {
        context.makeCurrent(&surface);
        if (frameBuffer)
            frameBuffer->bind();
    }

    // Black background, depth cleared, identity matrices with the [-1, 1] view.
    void clear()
    {
        glViewport(0, 0, SIZE, SIZE);
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-1.0, 1.0, -1.0, 1.0, -10.0, 10.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_LIGHTING);
        glEnable(GL_DEPTH_TEST);
        glColor3f(1.0f, 0.0f, 0.0f);
    }

    // The colour of the pixel at (x, y) counted from the lower left, as GL counts.
    QColor pixel(int x, int y)
    {
        glFinish();
        const QImage image = frameBuffer->toImage();
        return image.pixelColor(x, SIZE - 1 - y);
    }

    // The GL coordinate of the centre of pixel i.
    static double centre(int i) { return -1.0 + (i + 0.5) * 2.0 / SIZE; }

private:
    QOffscreenSurface surface;
    QOpenGLContext context;
    std::unique_ptr<QOpenGLFramebufferObject> frameBuffer;
};

// Pixels inside the two faces of the pixel square: face 0 below its diagonal, face 1 above.
const Probe IN_FACE_0{40, 24};
const Probe IN_FACE_1{24, 40};

// A square with its corners on the centres of pixels 16 and 47, faces (0,1,2) and (0,2,3),
// with normals and box.
inline void buildPixelSquare(scene::CMeshO& mesh, double z = 0.0)
{
    const double low = OffscreenTarget::centre(16);
    const double high = OffscreenTarget::centre(47);
    buildMesh(mesh, {Point(low, low, z), Point(high, low, z), Point(high, high, z), Point(low, high, z)},
              {{0, 1, 2}, {0, 2, 3}});
    scene::MeshNormals::updateVertexAndFaceNormals(mesh);
    scene::MeshBounds::update(mesh);
}

inline bool sameColor(const QColor& expected, const QColor& actual)
{
    return expected.red() == actual.red() && expected.green() == actual.green() && expected.blue() == actual.blue();
}

} // namespace test
} // namespace qel
