#include "module_scene/scenecoordinatesystem.h"

#include "kernel/math/numerictraits.h"
#include "module_scene/gui/currentcontextguard.h"
#include "module_scene/gui/sharedcontext.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelementfactory.h"

#include <QOpenGLContext>
#include <QPoint>
#include <QThread>
#include <GL/gl.h>
#include <cmath>
#include <vector>

namespace qel {
namespace scene {

const QString SceneCoordinateSystem::TypeName = QStringLiteral("Coordinatesystem");

namespace {

const SceneElementFactory::Register registration(SceneCoordinateSystem::TypeName,
                                                 &SceneCoordinateSystem::createElement);

const int DigitCount = 10;
const float GridExtent = 1000.0f;

typedef std::vector<QPoint> Strip;

// Polylines of the digits in a cell 10 high, centred on the origin.
const std::vector<Strip> DigitStrips[DigitCount] = {
    {{{-3, 3}, {-1, 5}, {1, 5}, {3, 3}, {3, -3}, {1, -5}, {-1, -5}, {-3, -3}, {-3, 3}}},
    {{{-2, 1}, {2, 5}, {2, -5}}},
    {{{-3, 3}, {-1, 5}, {1, 5}, {3, 3}, {-3, -5}, {5, -5}}},
    {{{-3, 3}, {-1, 5}, {1, 5}, {3, 3}, {3, 1}, {1, 0}, {3, -1}, {3, -3}, {1, -5}, {-1, -5}, {-3, -3}}},
    {{{1, -5}, {1, 5}, {-3, -1}, {2, -1}}},
    {{{3, 5}, {-3, 5}, {-3, -1}, {-1, 1}, {1, 1}, {3, -1}, {3, -3}, {1, -5}, {-1, -5}, {-3, -3}}},
    {{{3, 3}, {1, 5}, {-1, 5}, {-3, 3}, {-3, -3}, {-1, -5}, {1, -5}, {3, -3}, {3, -1}, {1, 1}, {-1, 1}, {-3, -1}}},
    {{{-3, 5}, {3, 5}, {-2, -5}}, {{-1, 1}, {3, 1}}},
    {{{-1, 0}, {1, 0}, {3, 1}, {3, 3}, {1, 5}, {-1, 5}, {-3, 3}, {-3, 1}, {-1, 0}, {-3, -1}, {-3, -3}, {-1, -5},
      {1, -5}, {3, -3}, {3, -1}, {1, 0}}},
    {{{-3, -3}, {-1, -5}, {2, -5}, {3, -3}, {3, 3}, {1, 5}, {-1, 5}, {-3, 3}, {-3, 1}, {-1, -1}, {1, -1}, {3, 1}}},
};

} // namespace

SceneCoordinateSystem::SceneCoordinateSystem() : SceneElement(tr("Coordinatesystem"))
{
    m_isViewOrientationEnabled = false;
    m_isAParentNode = true;
    m_isTransformable = false;
    m_isReparentable = false;
}

SceneCoordinateSystem::~SceneCoordinateSystem()
{
    releaseDigitLists();
}

// GL belongs to the context's thread: from elsewhere the lists go at its next turn.
void SceneCoordinateSystem::releaseDigitLists()
{
    gui::SharedContext* context = listContext.data();
    if (!context)
        return;
    const unsigned int first = firstDigitList;
    auto release = [context, first]() {
        const gui::CurrentContextGuard keepCurrent;
        context->glDeleteLists(first);
    };
    if (QThread::currentThread() == context->thread())
        release();
    else
        QMetaObject::invokeMethod(context, release, Qt::QueuedConnection);
}

SceneElement* SceneCoordinateSystem::createElement()
{
    return new SceneCoordinateSystem;
}

QString SceneCoordinateSystem::getTypeName() const
{
    return TypeName;
}

void SceneCoordinateSystem::computeGridPitch(float globalScaling, float measuring, float& pitch, float& unit)
{
    pitch = 10.0f;
    unit = 10.0f;
    if (!(globalScaling > math::NumericTraits<double>::Epsilon))
        return;
    const float factor = globalScaling / measuring;
    pitch = factor * 10.0f;
    if (!std::isfinite(pitch) || !(pitch > 0.0f)) {
        pitch = 10.0f;
        return;
    }
    if (pitch > 100.0f) {
        do {
            pitch /= 100.0f;
            unit /= 100.0f;
        } while (pitch >= 100.0f);
    } else if (pitch < 0.1f) {
        do {
            pitch /= 0.01f;
            unit /= 0.01f;
        } while (pitch < 1.0f);
    }
}

// The lists are made in the shared context, which the list book makes current; the paint
// that runs this goes on in its own context afterwards.
void SceneCoordinateSystem::initializeGL()
{
    if (!listContext.isNull())
        return;
    gui::SharedContext* context = _GlobalContext();
    const gui::SharedContext::LockHelper lock(context, true, false);
    const gui::CurrentContextGuard keepCurrent;
    const unsigned int first = context->glGenLists(DigitCount);
    if (first == 0)
        return;
    firstDigitList = first;
    listContext = context;
    compileDigitLists();
}

void SceneCoordinateSystem::compileDigitLists() const
{
    for (int digit = 0; digit < DigitCount; ++digit) {
        glNewList(firstDigitList + digit, GL_COMPILE);
        for (const Strip& strip : DigitStrips[digit]) {
            glBegin(GL_LINE_STRIP);
            for (const QPoint& point : strip)
                glVertex3f(static_cast<float>(point.x()), static_cast<float>(point.y()), 0.0f);
            glEnd();
        }
        glEndList();
    }
}

void SceneCoordinateSystem::drawGL()
{
    const util::ZPointer<Scene> scene = _GlobalScene();
    float pitch = 10.0f;
    float unit = 10.0f;
    computeGridPitch(static_cast<float>(scene->getGlobalScalingFactor()), static_cast<float>(scene->getMeasuring()),
                     pitch, unit);
    drawGrid(pitch);
    drawLabels(pitch, unit);
}

void SceneCoordinateSystem::drawGrid(float pitch) const
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glBegin(GL_LINES);
    glColor3b(64, 16, 16);
    glVertex3f(-GridExtent, 0.0f, 0.0f);
    glVertex3f(GridExtent, 0.0f, 0.0f);
    glColor3b(16, 64, 16);
    glVertex3f(0.0f, -GridExtent, 0.0f);
    glVertex3f(0.0f, GridExtent, 0.0f);
    glColor3b(16, 16, 64);
    glVertex3f(0.0f, 0.0f, -GridExtent);
    glVertex3f(0.0f, 0.0f, GridExtent);
    for (int k = 0;; ++k) {
        const float position = static_cast<float>(k) * pitch;
        if (!(position <= GridExtent))
            break;
        if (k % 10 == 0)
            glColor3b(17, 17, 17);
        else
            glColor3b(34, 34, 34);
        for (const float p : {position, -position}) {
            glVertex3f(p, -GridExtent, 0.0f);
            glVertex3f(p, GridExtent, 0.0f);
            glVertex3f(-GridExtent, p, 0.0f);
            glVertex3f(GridExtent, p, 0.0f);
        }
    }
    glEnd();
    glPopAttrib();
}

// The labels keep their size on the screen whatever the zoom of the view.
void SceneCoordinateSystem::drawLabels(float pitch, float unit) const
{
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_LINE_SMOOTH);
    double modelView[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
    const double zoom = std::sqrt(modelView[0] * modelView[0] + modelView[1] * modelView[1]
                                  + modelView[2] * modelView[2] + modelView[3] * modelView[3]);
    const float scale = static_cast<float>(0.4 / zoom);

    for (int i = 0;; i += 10) {
        const float distance = static_cast<float>(i) * pitch;
        if (!(distance <= GridExtent))
            break;
        const QString text = QString::number(i * unit, 'g', 6);

        glColor3b(64, 16, 16);
        glPushMatrix();
        glTranslatef(distance, 0.0f, 0.0f);
        glScalef(scale, scale, scale);
        glTranslatef(6.0f, 8.0f, 0.0f);
        drawNumber(text, true);
        glPopMatrix();

        glColor3b(16, 64, 16);
        glPushMatrix();
        glTranslatef(0.0f, distance, 0.0f);
        glScalef(scale, scale, scale);
        glTranslatef(6.0f, 8.0f, 0.0f);
        drawNumber(text, false);
        glPopMatrix();
    }
    glPopAttrib();
}

// Characters other than digits (sign, point, exponent) leave a gap.
void SceneCoordinateSystem::drawNumber(const QString& text, bool testLists) const
{
    for (const QChar character : text) {
        if (character >= QLatin1Char('0') && character <= QLatin1Char('9')) {
            const unsigned int list = firstDigitList + static_cast<unsigned int>(character.unicode() - '0');
            if (!testLists || glIsList(list))
                glCallList(list);
        }
        glTranslatef(8.0f, 0.0f, 0.0f);
    }
}

} // namespace scene
} // namespace qel
