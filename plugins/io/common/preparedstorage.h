#pragma once

#include "kernel/util/concurrenttask.h"
#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/facevector.h"

#include <cstddef>
#include <memory>

namespace qel {
namespace io {
namespace plugins {

// The storage of a mesh, made on another core while its file is still being read. Fresh
// memory costs about as much as the reading itself: a reader that knows its face count
// early has both done at once. A storage that doesn't fit what was read is dropped.
class PreparedStorage
{
public:
    PreparedStorage();
    // Waits for a storage still in the making.
    ~PreparedStorage();

    // Starts making `faces` faces and `vertices` default vertices with room for `vertexRoom`.
    void start(std::size_t faces, std::size_t vertices, std::size_t vertexRoom);

    // Hands the faces to the empty face vector of the mesh if there are exactly `faces`.
    bool takeFaces(qel::scene::CMeshO& mesh, std::size_t faces);
    // Hands exactly `vertices` default vertices to the empty mesh if the room suffices.
    bool takeVertices(qel::scene::CMeshO& mesh, std::size_t vertices);

private:
    struct Storage
    {
        qel::scene::FaceVector faces;
        qel::scene::CMeshO::VertexVector vertices;
    };

    Storage* ready();

    std::unique_ptr<util::ConcurrentTask<std::unique_ptr<Storage>>> pending;
    std::unique_ptr<Storage> storage;
};

} // namespace plugins
} // namespace io
} // namespace qel
