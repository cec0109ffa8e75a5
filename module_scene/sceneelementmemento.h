#pragma once

#include "kernel/main/memento.h"
#include "module_scene/sceneelement.h"

#include <list>

namespace qel {
namespace scene {

// The placement of an element (transform and origin) for undo. The mementos of a
// subtree hang as a flat list under the memento of its top element. The element is held
// without a reference: every deletion of an element empties the undo history.
class SceneElementMemento : public main::Memento
{
public:
    typedef SceneElement::Matrix4 Matrix4;

    SceneElementMemento(SceneElement* element, const Matrix4& transformMatrix, const Matrix4& originMatrix);
    // Deletes the child mementos.
    ~SceneElementMemento() override;

    // Puts origin and transform back; elements that aren't transformable keep theirs.
    void restore() override;
    // The element's placement as it is now, for this memento and all of its children.
    main::Memento* createOpposite() override;

    // Takes over the memento.
    void addChild(main::Memento* child);
    const std::list<main::Memento*>& getChilds() const { return childs; }
    SceneElement* getElement() const { return element; }
    const Matrix4& getTransformMatrix() const { return transformMatrix; }
    const Matrix4& getOrigin() const { return originMatrix; }

private:
    std::list<main::Memento*> childs;
    SceneElement* element;
    Matrix4 transformMatrix;
    Matrix4 originMatrix;
};

} // namespace scene
} // namespace qel
