#pragma once

#include "module_scene/sceneelement.h"

#include <QPointer>

namespace qel {
namespace gui {
class SharedContext;
}
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

    // The first of the ten digit lists, 0xFFFFFFFF while none are made.
    unsigned int getFirstDigitList() const { return firstDigitList; }

protected:
    void drawGL() override;
    void initializeGL() override;

private:
    void drawGrid(float pitch) const;
    void drawLabels(float pitch, float unit) const;
    void drawNumber(const QString& text, bool testLists) const;
    void compileDigitLists() const;
    void releaseDigitLists();

    unsigned int firstDigitList = 0xFFFFFFFF;
    // The context whose book holds the lists; when it goes, it deletes them itself.
    QPointer<gui::SharedContext> listContext;
};

} // namespace scene
} // namespace qel
