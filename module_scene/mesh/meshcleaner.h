#pragma once

namespace qel {
namespace scene {

class CMeshO;

// Removal of duplicate and unreferenced vertices and of degenerate faces. Removed entries are
// flagged deleted and leave vn and fn; MeshAllocator compacts them away.
class MeshCleaner
{
public:
    // Merges live vertices with bit-identical coordinates into one, found by one sort on
    // (z, y, x) and one walk; corners of live faces are rewritten to the survivor, which is
    // the first of the equal vertices in storage order. With removeDegenerateFaces the faces
    // left with two equal corners are deleted afterwards. Returns the number merged away.
    static int removeDuplicateVertices(CMeshO& mesh, bool removeDegenerateFaces = true);
    // Deletes live faces with two equal corner pointers; returns how many.
    static int removeDegenerateFaces(CMeshO& mesh);
    // Deletes live vertices that no live face uses, marked with a user bit of this thread;
    // returns how many.
    static int removeUnreferencedVertices(CMeshO& mesh);

private:
    MeshCleaner() = delete;
};

} // namespace scene
} // namespace qel
