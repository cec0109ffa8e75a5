#pragma once

// Scenes of flat test elements shown in scene panels, rendered and read back.
#include "kernel/main/overseer.h"
#include "module_scene/gui/scenepanel.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/scenedrawer.h"
#include "module_scene/sceneelement.h"

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QSettings>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <qopengl.h>
#include <vector>

namespace qel {
namespace test {

// What an element met when the drawer had it drawn.
struct DrawRecord
{
    QString name;
    bool blend;
    bool cullFace;
    bool clipPlanes[6];
    GLboolean colorMask[4];
    double modelView[16];
    scene::SceneDrawer::Matrix4 currentTransform;
};

typedef std::vector<DrawRecord> DrawLog;

inline DrawRecord recordGLState(const QString& name)
{
    DrawRecord record;
    record.name = name;
    record.blend = glIsEnabled(GL_BLEND);
    record.cullFace = glIsEnabled(GL_CULL_FACE);
    for (int plane = 0; plane < 6; ++plane)
        record.clipPlanes[plane] = glIsEnabled(static_cast<GLenum>(GL_CLIP_PLANE0 + plane));
    glGetBooleanv(GL_COLOR_WRITEMASK, record.colorMask);
    glGetDoublev(GL_MODELVIEW_MATRIX, record.modelView);
    record.currentTransform = scene::SceneDrawer::getCurrentTransform();
    return record;
}

inline QStringList namesOf(const DrawLog& log)
{
    QStringList names;
    for (const DrawRecord& record : log)
        names << record.name;
    return names;
}

// A flat square facing +z at height z in its own frame, unlit, in its colour with the
// element's opacity as alpha. Each drawing is recorded with the GL state it met.
class QuadElement : public scene::SceneElement
{
public:
    QuadElement(const QString& name, const QColor& color, double halfSize, double z, DrawLog* log = nullptr)
        : SceneElement(name), color(color), halfSize(halfSize), z(z), log(log)
    {
    }

    QString getTypeName() const override { return QStringLiteral("TestQuad"); }

    int initializeCalls = 0;

protected:
    void drawGL() override
    {
        if (log)
            log->push_back(recordGLState(getName()));
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glDisable(GL_LIGHTING);
        glColor4d(color.redF(), color.greenF(), color.blueF(), getOpacity());
        glBegin(GL_QUADS);
        glVertex3d(-halfSize, -halfSize, z);
        glVertex3d(halfSize, -halfSize, z);
        glVertex3d(halfSize, halfSize, z);
        glVertex3d(-halfSize, halfSize, z);
        glEnd();
        glPopAttrib();
    }
    void initializeGL() override { ++initializeCalls; }

private:
    QColor color;
    double halfSize;
    double z;
    DrawLog* log;
};

// A modifier that switches on one GL clip plane keeping x >= 0 of its frame, as clipping
// planes do, and records when it is drawn.
class ClipModifier : public scene::SceneElement
{
public:
    ClipModifier(const QString& name, int plane, DrawLog* log) : SceneElement(name), plane(plane), log(log)
    {
        m_isModifier = true;
        m_isAParentNode = true;
    }

    QString getTypeName() const override { return QStringLiteral("TestModifier"); }

protected:
    void drawGL() override
    {
        log->push_back(recordGLState(getName()));
        const GLdouble keepPositiveX[4] = {1.0, 0.0, 0.0, 0.0};
        glClipPlane(static_cast<GLenum>(GL_CLIP_PLANE0 + plane), keepPositiveX);
        glEnable(static_cast<GLenum>(GL_CLIP_PLANE0 + plane));
    }
    void initializeGL() override {}

private:
    int plane;
    DrawLog* log;
};

inline bool closeTo(const QColor& expected, const QColor& actual, int tolerance = 2)
{
    return std::abs(expected.red() - actual.red()) <= tolerance
           && std::abs(expected.green() - actual.green()) <= tolerance
           && std::abs(expected.blue() - actual.blue()) <= tolerance;
}

inline ::testing::AssertionResult colorAt(const QImage& image, int x, int y, const QColor& expected,
                                          int tolerance = 2)
{
    const QColor actual = image.pixelColor(x, y);
    if (closeTo(expected, actual, tolerance))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << ") is " << actual.name().toStdString()
                                         << ", expected " << expected.name().toStdString();
}

const QColor DefaultBackground(0x4c, 0x4c, 0x4c);

// Pixels per scene unit at the given distance from the eye, for a panel of the given height
// (the field of view is 45 degrees high).
inline double pixelsPerUnit(int height, double distance)
{
    return (height / 2.0) / (distance * std::tan(M_PI / 8.0));
}

// A fresh scene per test, panels that die before it, and stored settings reset around it.
class SceneViewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        resetSettings();
        scene = new scene::Scene;
    }

    void TearDown() override
    {
        panels.clear();
        scene->shutDown();
        scene = nullptr;
        resetSettings();
    }

    static void resetSettings()
    {
        QSettings* settings = main::Overseer::getInstance()->getQSettings();
        settings->remove(QStringLiteral("settings"));
        settings->sync();
    }

    static void setSetting(const QString& key, const QVariant& value)
    {
        main::Overseer::getInstance()->getQSettings()->setValue(key, value);
    }

    template <class T>
    util::ZPointer<T> add(T* element, scene::SceneElement* parent = nullptr)
    {
        util::ZPointer<T> pointer(element);
        if (parent)
            parent->addChild(pointer);
        scene->addElement(pointer.get());
        return pointer;
    }

    // Leaves the grid and axes out, so that only the test elements meet the eye.
    void hideCoordinateSystem() { scene->getRootNode()->setVisible(false); }

    gui::ScenePanel* makePanel(int width = 200, int height = 200)
    {
        panels.emplace_back(new gui::ScenePanel(scene));
        gui::ScenePanel* panel = panels.back().get();
        panel->resize(width, height);
        panel->show();
        return panel;
    }

    // One frame, drawn now.
    static QImage render(gui::ScenePanel* panel) { return panel->grabFramebuffer(); }

    static double pixelsPerUnit(int height, double distance) { return test::pixelsPerUnit(height, distance); }

    util::ZPointer<scene::Scene> scene;
    std::vector<std::unique_ptr<gui::ScenePanel>> panels;
};

} // namespace test
} // namespace qel
