#include "module_scene/sceneselectionplane.h"

#include "kernel/math/numerictraits.h"
#include "kernel/math/quaternion.h"
#include "module_scene/selectedfacecollector.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <qopengl.h>

namespace qel {
namespace scene {

const QString SceneSelectionPlane::TypeName = QStringLiteral("SceneSelectionPlane");

const SceneElementFactory::Register SceneSelectionPlane::m_Register(SceneSelectionPlane::TypeName,
                                                                    &SceneSelectionPlane::createElement);

namespace {

typedef math::NumericTraits<double> Traits;

const int GridExtent = 1000;
const int GridStep = 10;
const double NormalLineLength = 100.0;

} // namespace

SceneSelectionPlane::SceneSelectionPlane(const QString& name) : SceneElement(name)
{
    m_isFocusable = true;
    m_isInternal = false;
    m_isTransformable = true;
    m_isReparentable = true;
    m_isSerializable = true;
    m_hasBoundingBox = false;
    m_hasScalingFactor = true;
    m_isIntersectable = false;
    m_isViewOrientationEnabled = false;
    planeColor.setRgb(0, 230, 0, 255);
}

SceneElement* SceneSelectionPlane::createElement()
{
    return new SceneSelectionPlane(QString());
}

QString SceneSelectionPlane::getTypeName() const
{
    return TypeName;
}

void SceneSelectionPlane::saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort)
{
    SceneElement::saveTo(writer, tar, abort);
    writer->writeStartElement("planeColor");
    writer->writeAttribute("r", QString::number(planeColor.red()));
    writer->writeAttribute("g", QString::number(planeColor.green()));
    writer->writeAttribute("b", QString::number(planeColor.blue()));
    writer->writeEndElement();
}

void SceneSelectionPlane::loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort)
{
    SceneElement::loadFrom(reader, tar, scene, abort);
    if (reader->name() != QLatin1String("planeColor"))
        return;
    const QXmlStreamAttributes attributes = reader->attributes();
    planeColor.setRgb(attributes.value("r").toInt(), attributes.value("g").toInt(), attributes.value("b").toInt(),
                      255);
}

SceneElement::Vector4 SceneSelectionPlane::getPlaneBase() const
{
    return m_transformMatrix.getColumn(3);
}

void SceneSelectionPlane::setPlaneBase(const Vector4& base)
{
    m_transformMatrix.setColumn(3, base);
    setChanged(CHANGE_TRANSFORM);
}

// The rotation part turns (0, 0, 1, 0): its third column.
SceneElement::Vector4 SceneSelectionPlane::getPlaneNormal() const
{
    Vector4 normal;
    for (int row = 0; row < 3; ++row)
        normal[row] = math::snap(m_transformMatrix(row, 2));
    normal.w() = Traits::Zero;
    return normal.normalize();
}

// The quaternion's matrix turns by minus its angle (see Quaternion), so the axis
// n x (0, 0, 1) turns the z axis onto n.
void SceneSelectionPlane::setPlaneNormal(const Vector4& normal)
{
    Vector4 axis(normal.y(), -normal.x(), Traits::Zero, Traits::Zero);
    const float cosine = static_cast<float>(math::snap(normal.dot(Vector4(0.0, 0.0, 1.0, 0.0))));
    const float angle = std::acos(cosine);
    if (axis.length() != Traits::Zero)
        axis.normalize();
    const Matrix4 rotation = math::Quaternion<double>::fromAxisAngle(axis, static_cast<double>(angle)).toMatrix();
    for (int column = 0; column < 3; ++column)
        m_transformMatrix.setColumn(column, rotation.getColumn(column));
    setChanged(CHANGE_TRANSFORM);
}

math::Plane<double> SceneSelectionPlane::getPlane() const
{
    const Vector4 normal = getPlaneNormal();
    const double distance = math::snap(getPlaneBase().dot(normal));
    return math::Plane<double>(normal, static_cast<double>(static_cast<float>(distance)));
}

SceneSelectionPlane::FaceMap SceneSelectionPlane::getFacesAbove() const
{
    FaceMap faces;
    const Vector4 base = getPlaneBase();
    const Vector4 normal = getPlaneNormal();
    if (m_parent.isNull())
        return faces;
    for (const Pointer& element : SelectedFaceCollector::modelsBelow(m_parent.get())) {
        auto* model = static_cast<SceneVCGModel*>(element.get());
        const Matrix4 complete = model->getCompleteTransformMatrix();
        SelectedFaceCollector::collect(
            model,
            [&](const CVertexO& vertex) {
                const Vector4 position = complete * Vector4(vertex.coord.x(), vertex.coord.y(), vertex.coord.z(), 1.0);
                const float height = static_cast<float>(math::snap((position - base).dot(normal)));
                return !(height < 0.0f);
            },
            faces);
    }
    return faces;
}

void SceneSelectionPlane::initializeGL()
{
}

void SceneSelectionPlane::drawGL()
{
    if (!m_isVisible)
        return;
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushMatrix();
    glDisable(GL_LIGHTING);
    glEnable(GL_COLOR_MATERIAL);
    glBegin(GL_LINES);
    glColor3f(static_cast<float>(planeColor.redF()), static_cast<float>(planeColor.greenF()),
              static_cast<float>(planeColor.blueF()));
    for (int v = -GridExtent; v <= GridExtent; v += GridStep) {
        glVertex3d(v, -GridExtent, 0.0);
        glVertex3d(v, GridExtent, 0.0);
        glVertex3d(-GridExtent, v, 0.0);
        glVertex3d(GridExtent, v, 0.0);
    }
    glEnd();
    const QColor normalColor = planeColor.lighter(120);
    glLineWidth(2.0f);
    glBegin(GL_LINES);
    glColor3f(static_cast<float>(normalColor.redF()), static_cast<float>(normalColor.greenF()),
              static_cast<float>(normalColor.blueF()));
    glVertex3d(0.0, 0.0, 0.0);
    glVertex3d(0.0, 0.0, NormalLineLength);
    glEnd();
    glLineWidth(1.0f);
    glPopMatrix();
    glPopAttrib();
}

} // namespace scene
} // namespace qel
