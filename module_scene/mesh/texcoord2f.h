#pragma once

namespace qel {
namespace scene {

// A texture coordinate with the number of the texture it belongs to (-1: none).
struct TexCoord2f
{
    float u = 0.5f;
    float v = 0.5f;
    short n = -1;
};

} // namespace scene
} // namespace qel
