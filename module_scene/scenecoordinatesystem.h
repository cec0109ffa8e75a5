#pragma once

#include "module_scene/sceneelement.h"

namespace qel {
namespace scene {

// The root element of every scene: the three axes, a grid in the z = 0 plane whose pitch
// follows the measuring unit, and numeric labels drawn from display lists of its own.
class SceneCoordinateSystem : public SceneElement
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneCoordinateSystem)

public:
    static const QString TypeName;

    SceneCoordinateSystem();
    ~SceneCoordinateSystem() override;

    static SceneElement* createElement();

    QString getTypeName() const override;

    // The grid pitch in scene units and the shown unit of one grid step, from the scene's
    // scaling factor and measuring unit; both stay 10 while the scaling is not set.
    static void computeGridPitch(float globalScaling, float measuring, float& pitch, float& unit);

protected:
    void drawGL() override;
    void initializeGL() override;

private:
    void drawGrid(float pitch) const;
    void drawLabels(float pitch, float unit) const;
    void drawNumber(const QString& text, bool testLists) const;

    unsigned int firstDigitList = 0xFFFFFFFF;
};

} // namespace scene
} // namespace qel
