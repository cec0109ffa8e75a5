#pragma once

#include "kernel/util/zpointer.h"
#include "module_scene/sceneelement.h"
#include "module_scene/sceneelementfactory.h"

#include <map>
#include <vector>

namespace qel {
namespace scene {

class CFaceO;
class SceneVCGModel;

// A sphere that marks the faces of the models inside it. Its centre is the element's
// position; its radius is the distance to a handle, the Dragger, which is its child and
// follows the sphere's moves. Element matrices are world matrices, so the radius is the
// distance between the two translation columns. It works on the models among its parent's
// descendants.
class SceneSphere : public SceneElement
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneSphere)

public:
    // The radius handle, drawn as a red point. It knows its sphere but does not keep it alive.
    class Dragger : public SceneElement
    {
        Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneSphere::Dragger)

    public:
        static const QString TypeName;

        explicit Dragger(SceneSphere* sphere);

        QString getTypeName() const override;
        SceneSphere* getSphere() const { return sphere; }

        // The handle's look, also that of the bounding box's handles.
        static void drawHandle();

    protected:
        void drawGL() override;
        void initializeGL() override;

    private:
        SceneSphere* sphere;
    };

    typedef std::map<util::ZPointer<SceneElement>, std::vector<unsigned int>> FaceMap;

    static const QString TypeName;
    static const double InitialRadius;

    SceneSphere();

    static SceneElement* createElement();

    QString getTypeName() const override;

    const util::ZPointer<Dragger>& getDragger() const { return m_Dragger; }
    // The distance between the positions of the sphere and the handle.
    double getRadius() const;

    // Whether a corner of the face lies inside the sphere (on it counts). A model whose
    // centre is farther than the radius plus its bounding sphere's full diameter is rejected
    // without looking at its vertices.
    bool isInside(SceneVCGModel* model, const CFaceO* face) const;
    // For each model among the parent's descendants with a face that has a corner inside:
    // those faces' places in ascending order. Empty without a parent.
    FaceMap getFacesInside() const;

protected:
    void drawGL() override;
    void initializeGL() override;
    // The handle makes the same move.
    void setFutureTransform(const Matrix4& matrix) override;

private:
    static const SceneElementFactory::Register m_Register;

    bool isFarFrom(SceneVCGModel* model, const Vector4& centre, double radius) const;
    static Vector4 worldPosition(const Matrix4& complete, const Vector3& coord);

    util::ZPointer<Dragger> m_Dragger;
};

} // namespace scene
} // namespace qel
