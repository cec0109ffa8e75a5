#pragma once

#include "kernel/math/vector.h"
#include "kernel/util/zobservedclass.h"
#include "kernel/util/zobserver.h"

#include <QString>
#include <cstdint>
#include <memory>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace qel {
namespace main {
class Event;
}
namespace scene {

class Scene;
class SceneElement;

// A point picked on an element, glued to it: kept in the element's own frame and
// recomputed in scene coordinates on each change of the element. It outlives its element
// ("lost") and then stays where it was last.
class SelectedPoint : public util::ZObservedClass
{
public:
    typedef math::Vector<float, 3> Point3;
    typedef math::Vector<double, 3> Vector3;
    typedef math::Vector<double, 4> Vector4;

    // The face index of a point that was not picked on a face.
    static const uint64_t NoFace = ~static_cast<uint64_t>(0);

    // The point is in scene coordinates.
    SelectedPoint(SceneElement* element, const Point3& point, uint64_t faceIndex);
    ~SelectedPoint() override;

    SceneElement* getElement() const { return element; }
    bool isElementLost() const { return elementLost; }
    const Vector4& getOriginalPoint() const { return originalPoint; }
    const Vector4& getTransformedPoint() const { return transformedPoint; }
    Vector3 getPoint() const;
    uint64_t getAssociatedFaceIndex() const { return faceIndex; }
    bool isHidden() const { return hidden; }
    bool isSelected() const { return selected; }
    void setHidden(bool value);
    void setSelected(bool value);

    // Null unless the reader stands on a start element "point".
    static SelectedPoint* loadFrom(QXmlStreamReader* reader, Scene* scene);
    static void saveTo(const SelectedPoint* point, QXmlStreamWriter* writer, const bool& abort);

private:
    class SceneElementObserver : public util::ZObserver
    {
    public:
        explicit SceneElementObserver(SelectedPoint* point) : point(point) {}
        void update(void* data, void* source) override;

    private:
        SelectedPoint* point;
    };

    // For loading: the point is in the frame of the named element, which may come later.
    SelectedPoint(const QString& elementName, const Point3& point, Scene* scene);
    SelectedPoint(const SelectedPoint&) = delete;
    SelectedPoint& operator=(const SelectedPoint&) = delete;

    void elementDeleted(const main::Event* event);
    void initFunction(SceneElement* element);
    void bindTo(SceneElement* element);
    void updateTransformedPoint();

    SceneElement* element = nullptr;
    bool elementLost = true;
    Vector4 transformedPoint;
    Vector4 originalPoint;
    SceneElementObserver* observer = nullptr;
    QString pendingName;
    bool selected = false;
    bool hidden = false;
    uint64_t faceIndex = NoFace;
    // Cleared when the point goes: a pending init function of the scene holds it.
    std::shared_ptr<SelectedPoint*> self;
};

} // namespace scene
} // namespace qel
