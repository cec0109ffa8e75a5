#pragma once

#include <cstdint>
#include <vector>

namespace qel {
namespace scene {
class CMeshO;
}
namespace io {
namespace scene {

// The first cleaning steps of a load, for meshes of millions of vertices. A binary STL
// delivers every corner of every triangle as a vertex of its own, so five in six vertices
// go in the first step; the steps after it here touch only the survivors, which they keep
// in a list, instead of scanning the whole vertex vector again and again. The results are
// those of MeshCleaner and MeshAllocator, step for step.
class FastMeshCleaner
{
public:
    explicit FastMeshCleaner(qel::scene::CMeshO& mesh);

    // Merges live vertices with identical coordinates into the first of them in storage
    // order and rewrites the corners of live faces, then deletes the faces left with two
    // equal corners. Found with one pass through a hash table of the distinct points rather
    // than a sort of all of them. Returns the number of vertices merged away.
    int removeDuplicateVertices();
    // Deletes live vertices that no live face uses, marked with a user bit of this thread.
    int removeUnreferencedVertices();
    // Moves the live vertices down in their order, shrinks the storage to exactly vn entries
    // and rewrites the corners of live faces; corners of deleted faces become null.
    void compactVertices();

private:
    void collectLiveVertices();
    // Sends the corners of live faces to the survivors of the duplicate search.
    void rewriteCorners();
    // Shrinks the vertex storage to its size.
    void releaseSpareStorage();

    qel::scene::CMeshO& mesh;
    // Places of the live vertices in ascending order, once known.
    std::vector<std::uint32_t> live;
    bool liveKnown;
    // Whether a live face has a corner on a deleted vertex, once the corners were seen.
    bool cornersChecked;
    bool cornersOnDeleted;
    // Old place to survivor, then to new place.
    std::vector<std::uint32_t> remap;
};

} // namespace scene
} // namespace io
} // namespace qel
