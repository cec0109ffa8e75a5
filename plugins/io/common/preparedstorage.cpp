#include "plugins/io/common/preparedstorage.h"


namespace qel {
namespace io {
namespace plugins {

PreparedStorage::PreparedStorage() = default;

PreparedStorage::~PreparedStorage() = default;

void PreparedStorage::start(std::size_t faces, std::size_t vertices, std::size_t vertexRoom)
{
    pending.reset(new qel::util::ConcurrentTask<std::unique_ptr<Storage>>([faces, vertices, vertexRoom] {
        std::unique_ptr<Storage> made(new Storage);
        made->faces.resize(faces);
        made->vertices.reserve(vertexRoom);
        made->vertices.resize(vertices);
        return made;
    }));
}

PreparedStorage::Storage* PreparedStorage::ready()
{
    if (pending) {
        storage = pending->get();
        pending.reset();
    }
    return storage.get();
}

bool PreparedStorage::takeFaces(qel::scene::CMeshO& mesh, std::size_t faces)
{
    Storage* made = ready();
    if (!made || made->faces.size() != faces || !mesh.face.empty())
        return false;
    mesh.face.swap(made->faces);
    mesh.fn = static_cast<int>(faces);
    return true;
}

bool PreparedStorage::takeVertices(qel::scene::CMeshO& mesh, std::size_t vertices)
{
    Storage* made = ready();
    if (!made || made->vertices.capacity() < vertices || !mesh.vert.empty())
        return false;
    made->vertices.resize(vertices);
    mesh.vert.swap(made->vertices);
    mesh.vn = static_cast<int>(vertices);
    return true;
}

} // namespace plugins
} // namespace io
} // namespace qel
