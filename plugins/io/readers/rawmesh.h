#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace io {
namespace readers {

// A triangle mesh as a reader leaves it: plain arrays, indices already checked against
// the vertex count and coordinates finite. Optional arrays are empty when the file has no
// such data.
struct RawMesh
{
    std::vector<double> positions;     // x, y, z per vertex
    std::vector<double> normals;       // x, y, z per vertex, or empty
    std::vector<std::uint8_t> colors;  // R, G, B, A per vertex, or empty
    std::vector<std::uint32_t> faces;  // three vertex indices per triangle
    std::vector<std::uint8_t> faceColors;  // R, G, B, A per triangle, or empty

    std::size_t vertexCount() const { return positions.size() / 3; }
    std::size_t faceCount() const { return faces.size() / 3; }
    bool hasNormals() const { return !normals.empty(); }
    bool hasColors() const { return !colors.empty(); }
    bool hasFaceColors() const { return !faceColors.empty(); }
};

} // namespace readers
} // namespace io
} // namespace qel
