#include "module_scene/mesh/cfaceo.h"

#include "module_scene/mesh/facevector.h"

namespace qel {
namespace scene {

std::size_t CFaceO::index() const
{
    return static_cast<std::size_t>(this - container->data());
}

Color4b& CFaceO::color()
{
    return container->colors()[index()];
}

const Color4b& CFaceO::color() const
{
    return container->colors()[index()];
}

std::uint32_t& CFaceO::mark()
{
    return container->marks()[index()];
}

CFaceO::Point& CFaceO::auxVector()
{
    return container->auxVectors()[index()];
}

FaceLinks& CFaceO::vertexFaceLinks()
{
    return container->vertexFaceLinks()[index()];
}

FaceLinks& CFaceO::faceFaceLinks()
{
    return container->faceFaceLinks()[index()];
}

const FaceLinks& CFaceO::faceFaceLinks() const
{
    return container->faceFaceLinks()[index()];
}

WedgeTexCoords& CFaceO::wedgeTexCoords()
{
    return container->wedgeTexCoords()[index()];
}

} // namespace scene
} // namespace qel
