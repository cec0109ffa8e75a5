#pragma once

#include "kernel/math/plane.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneelementfactory.h"

#include <QColor>
#include <map>
#include <vector>

namespace qel {
namespace scene {

// A plane, drawn as a grid, that marks the faces of the models above it. The plane is the
// element's own transform: the base is its position, the normal its local z axis. It works
// on the models among its parent's descendants.
class SceneSelectionPlane : public SceneElement
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneSelectionPlane)

public:
    typedef std::map<util::ZPointer<SceneElement>, std::vector<unsigned int>> FaceMap;

    static const QString TypeName;

    explicit SceneSelectionPlane(const QString& name);

    // An unnamed plane, for loading projects.
    static SceneElement* createElement();

    QString getTypeName() const override;
    void saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort) override;
    void loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort) override;

    // The translation column of the transform.
    Vector4 getPlaneBase() const;
    void setPlaneBase(const Vector4& base);
    // The local z axis in the parent's frame, unit length.
    Vector4 getPlaneNormal() const;
    // Turns the local z axis onto the (unit) normal; the base stays. A normal along -z gives
    // no axis to turn about, and the rotation then comes out as none.
    void setPlaneNormal(const Vector4& normal);
    // The distance goes through float.
    math::Plane<double> getPlane() const;

    QColor getPlaneColor() const { return planeColor; }

    // For each model among the parent's descendants with a face that has a vertex on the
    // plane or above it: those faces' places in ascending order. Empty without a parent.
    FaceMap getFacesAbove() const;

protected:
    void drawGL() override;
    void initializeGL() override;

private:
    static const SceneElementFactory::Register m_Register;

    QColor planeColor;
};

} // namespace scene
} // namespace qel
