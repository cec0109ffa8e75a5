#pragma once

#include "kernel/math/pointtable.h"
#include "plugins/io/readers/rawmesh.h"
#include "plugins/io/readers/stlparser.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel {
namespace io {
namespace readers {

// Takes triangles as STL stores them, every corner written out in full, and keeps each
// distinct point once, in the order of its first appearance, with faces over their places.
// Corners are equal when their coordinates compare equal, as the cleaning after a load
// compares them, so the cleaned mesh is the same as if every corner had been kept; only
// a tenth of the memory is touched on the way.
class CornerMerger : public StlParser::TriangleSink
{
public:
    CornerMerger();

    void expect(std::size_t triangles) override;
    void add(const double* corners, std::size_t triangles) override;

    std::size_t getCornerCount() const { return corners; }
    std::size_t getMergedCount() const { return corners - mesh.vertexCount(); }
    // Whether more corners came than a 32-bit place can count; nothing is stored past that.
    bool isTooLarge() const { return tooLarge; }

    // Hands the points and faces over and starts afresh.
    void takeMesh(RawMesh& target);

private:
    std::uint32_t placeOf(const double* point, std::uint32_t hash);

    RawMesh mesh;
    math::PointTable table;
    // Of the corners of the batch at hand.
    std::vector<std::uint32_t> hashes;
    std::size_t corners;
    bool tooLarge;
};

} // namespace readers
} // namespace io
} // namespace qel
