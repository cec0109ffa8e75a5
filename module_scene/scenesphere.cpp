#include "module_scene/scenesphere.h"

#include "kernel/math/numerictraits.h"
#include "module_scene/mesh/cfaceo.h"
#include "module_scene/mesh/cvertexo.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedfacecollector.h"

#include <cmath>
#include <qopengl.h>

namespace qel {
namespace scene {

const QString SceneSphere::TypeName = QStringLiteral("Sphere");
const QString SceneSphere::Dragger::TypeName = QStringLiteral("SceneSphere::Dragger");
const double SceneSphere::InitialRadius = 50.0;

const SceneElementFactory::Register SceneSphere::m_Register(SceneSphere::TypeName, &SceneSphere::createElement);

namespace {

const int Slices = 20;
const int Stacks = 20;

void wireVertex(double radius, double polar, double azimuth)
{
    const double x = std::sin(polar) * std::cos(azimuth);
    const double y = std::sin(polar) * std::sin(azimuth);
    const double z = std::cos(polar);
    glNormal3d(x, y, z);
    glVertex3d(radius * x, radius * y, radius * z);
}

// Circles of latitude, then great circles through the poles.
void drawWireSphere(double radius)
{
    for (int stack = 1; stack < Stacks; ++stack) {
        const double polar = M_PI * stack / Stacks;
        glBegin(GL_LINE_LOOP);
        for (int slice = 0; slice < Slices; ++slice)
            wireVertex(radius, polar, 2.0 * M_PI * slice / Slices);
        glEnd();
    }
    for (int slice = 0; slice < Slices / 2; ++slice) {
        const double azimuth = 2.0 * M_PI * slice / Slices;
        glBegin(GL_LINE_LOOP);
        for (int step = 0; step < 2 * Stacks; ++step)
            wireVertex(radius, M_PI * step / Stacks, azimuth);
        glEnd();
    }
}

} // namespace

// ---------------------------------------------------------------------------------------
// Dragger

SceneSphere::Dragger::Dragger(SceneSphere* sphere) : SceneElement(tr("SphereDragger")), sphere(sphere)
{
    m_isViewOrientationEnabled = false;
    m_isReparentable = false;
    m_isSerializable = false;
    m_isManipulator = true;
    m_transformMatrix = Matrix4::translation(InitialRadius, 0.0, 0.0);
    m_futureTransformMatrix = m_transformMatrix;
    m_pastTransformMatrix = m_transformMatrix;
}

QString SceneSphere::Dragger::getTypeName() const
{
    return TypeName;
}

void SceneSphere::Dragger::drawHandle()
{
    glPushAttrib(GL_ENABLE_BIT | GL_POINT_BIT | GL_CURRENT_BIT | GL_LIGHTING_BIT);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glPointSize(5.0f);
    glColor3f(1.0f, 0.0f, 0.0f);
    glBegin(GL_POINTS);
    glVertex3d(0.0, 0.0, 0.0);
    glEnd();
    glPopAttrib();
}

void SceneSphere::Dragger::drawGL()
{
    drawHandle();
}

void SceneSphere::Dragger::initializeGL()
{
}

// ---------------------------------------------------------------------------------------
// Sphere

SceneSphere::SceneSphere() : SceneElement(tr("Sphere"))
{
    m_isViewOrientationEnabled = false;
    m_isReparentable = false;
    m_isSerializable = false;
    m_isManipulator = true;
    m_Dragger = new Dragger(this);
    addChild(m_Dragger);
}

SceneElement* SceneSphere::createElement()
{
    return new SceneSphere;
}

QString SceneSphere::getTypeName() const
{
    return TypeName;
}

double SceneSphere::getRadius() const
{
    return (getCenter() - m_Dragger->getCenter()).length();
}

bool SceneSphere::isFarFrom(SceneVCGModel* model, const Vector4& centre, double radius) const
{
    return (centre - model->getCenter()).length() - radius - model->getBoundingSphereDiameter() > 0.0;
}

SceneElement::Vector4 SceneSphere::worldPosition(const Matrix4& complete, const Vector3& coord)
{
    Vector4 position = complete * Vector4(coord.x(), coord.y(), coord.z(), 1.0);
    for (int i = 0; i < 4; ++i)
        position[i] = math::snap(position[i]);
    return position;
}

bool SceneSphere::isInside(SceneVCGModel* model, const CFaceO* face) const
{
    const Vector4 centre = getCenter();
    const double radius = getRadius();
    if (isFarFrom(model, centre, radius))
        return false;
    const Matrix4 complete = model->getCompleteTransformMatrix();
    for (const CVertexO* corner : face->v) {
        if ((worldPosition(complete, corner->coord) - centre).length() <= radius)
            return true;
    }
    return false;
}

SceneSphere::FaceMap SceneSphere::getFacesInside() const
{
    FaceMap faces;
    const Vector4 centre = getCenter();
    const double radius = getRadius();
    if (m_parent.isNull())
        return faces;
    for (const Pointer& element : SelectedFaceCollector::modelsBelow(m_parent.get())) {
        auto* model = static_cast<SceneVCGModel*>(element.get());
        if (isFarFrom(model, centre, radius))
            continue;
        const Matrix4 complete = model->getCompleteTransformMatrix();
        SelectedFaceCollector::collect(
            model,
            [&](const CVertexO& vertex) {
                return (worldPosition(complete, vertex.coord) - centre).length() <= radius;
            },
            faces);
    }
    return faces;
}

void SceneSphere::setFutureTransform(const Matrix4& matrix)
{
    SceneElement::setFutureTransform(matrix);
    *m_Dragger += matrix;
}

void SceneSphere::initializeGL()
{
}

void SceneSphere::drawGL()
{
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LIGHTING_BIT);
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glColor3f(0.0f, 0.9f, 0.0f);
    drawWireSphere(getRadius());
    glPopAttrib();
}

} // namespace scene
} // namespace qel
