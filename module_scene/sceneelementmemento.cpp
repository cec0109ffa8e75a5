#include "module_scene/sceneelementmemento.h"

namespace qel {
namespace scene {

SceneElementMemento::SceneElementMemento(SceneElement* element, const Matrix4& transformMatrix,
                                         const Matrix4& originMatrix)
    : element(element), transformMatrix(transformMatrix), originMatrix(originMatrix)
{
}

SceneElementMemento::~SceneElementMemento()
{
    for (main::Memento* child : childs)
        delete child;
}

// The origin is set quietly: the transform that follows announces the change.
void SceneElementMemento::restore()
{
    if (element->isTransformable()) {
        element->m_originMatrix = originMatrix;
        element->setTransformMatrix(transformMatrix);
    }
    for (main::Memento* child : childs)
        child->restore();
}

main::Memento* SceneElementMemento::createOpposite()
{
    auto* opposite = new SceneElementMemento(element, element->getTransformMatrix(), element->getOrigin());
    for (main::Memento* child : childs) {
        if (main::Memento* childOpposite = child->createOpposite())
            opposite->addChild(childOpposite);
    }
    return opposite;
}

void SceneElementMemento::addChild(main::Memento* child)
{
    childs.push_back(child);
}

} // namespace scene
} // namespace qel
