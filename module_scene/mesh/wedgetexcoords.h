#pragma once

#include "module_scene/mesh/texcoord2f.h"

namespace qel {
namespace scene {

// The texture coordinates of the three corners of one face; new entries are (0.5, 0.5, -1).
struct WedgeTexCoords
{
    TexCoord2f corner[3];
};

} // namespace scene
} // namespace qel
