#pragma once

#include "module_scene/sceneelement.h"

namespace qel {
namespace scene {

// The selection node: with more than one element selected it takes the focus and the
// selected elements become its members, so that a move of the focused element moves the
// group. Members stay where they are in the tree (they join without a new parent).
class MultipleElementsSelection : public SceneElement
{
public:
    static const QString TypeName;

    MultipleElementsSelection();

    static SceneElement* createElement();

    QString getTypeName() const override;
    // M acts about the group's centre, along the parent's axes. The members move even when
    // a listener refuses the move of the node itself.
    void operator+=(const Matrix4& matrix) override;
    void transformStart(bool takeMemento) override;
    void transformFinish(SceneElement* initiator) override;
    // Elements that can't be transformed never join.
    void addChild(SceneElement* child, bool setParent = true) override;
    void removeChild(SceneElement* child) override;
    using SceneElement::addChild;
    using SceneElement::removeChild;
    // The members become the given elements (as clearChilds and addChild of each, without
    // parents), with one update at the end: a large selection costs linear time.
    void replaceMembers(const ElementList& members);

    // Recomputes the radius, the box and the position from the members.
    void update();

    const Box& getGroupBoundingBox() const { return groupBoundingBox; }
    double getGroupRadius() const { return groupRadius; }

protected:
    void drawGL() override;
    void initializeGL() override;

private:
    static Box boxOf(const SceneElement* member);
    void drawWireSphere() const;

    Box groupBoundingBox;
    double groupRadius = 0.0;
};

} // namespace scene
} // namespace qel
