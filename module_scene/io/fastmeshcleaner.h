#pragma once

namespace qel {
namespace scene {
class CMeshO;
}
namespace io {
namespace scene {

// The cleaning steps of a load where a scan of millions of triangles makes speed and memory
// count. Results are those of MeshCleaner and MeshAllocator; only the way differs.
class FastMeshCleaner
{
public:
    // Merges live vertices with identical coordinates into the first of them in storage order
    // and rewrites the corners of live faces, then deletes the faces left with two equal
    // corners. Same result as MeshCleaner::removeDuplicateVertices, but found with one pass
    // through a hash table that holds only the distinct points, instead of a sort of all of
    // them. Returns the number of vertices merged away.
    static int removeDuplicateVertices(qel::scene::CMeshO& mesh);
    // Gives back the vertex storage beyond vn after compaction (a binary STL shrinks to a
    // sixth), rebasing the corners of live faces onto the moved vertices.
    static void releaseSpareVertexStorage(qel::scene::CMeshO& mesh);

private:
    FastMeshCleaner() = delete;
};

} // namespace scene
} // namespace io
} // namespace qel
