#include "module_scene/io/fastmeshcleaner.h"

#include "kernel/math/pointtable.h"
#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshcleaner.h"
#include "module_scene/mesh/vertexuserbits.h"

#include <QtGlobal>
#include <algorithm>
#include <cstring>
#if defined(Q_OS_LINUX)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace qel {
namespace io {
namespace scene {

using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::CVertexO;

namespace {

// How many lookups ahead a table slot is fetched: far enough to arrive in time.
const std::size_t PREFETCH_DISTANCE = 64;

std::uint32_t hashOf(const CVertexO::Point& point)
{
    return qel::math::PointHash::of(point[0], point[1], point[2]);
}

bool samePoint(const CVertexO::Point& a, const CVertexO::Point& b)
{
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2];
}

} // namespace

FastMeshCleaner::FastMeshCleaner(CMeshO& mesh)
    : mesh(mesh), liveKnown(false), cornersChecked(false), cornersOnDeleted(false)
{
}

void FastMeshCleaner::collectLiveVertices()
{
    live.clear();
    live.reserve(static_cast<std::size_t>(mesh.vn));
    for (std::size_t place = 0; place < mesh.vert.size(); ++place) {
        if (!mesh.vert[place].isDeleted())
            live.push_back(static_cast<std::uint32_t>(place));
    }
    liveKnown = true;
}

int FastMeshCleaner::removeDuplicateVertices()
{
    if (mesh.vert.empty() || mesh.vn == 0)
        return 0;
    CVertexO* vertices = mesh.vert.data();
    const std::size_t count = mesh.vert.size();
    remap.resize(count);
    live.clear();
    live.reserve(count / 4);
    // Most meshes arrive with their points already distinct: room for all of them up front
    // spares the table its growing.
    qel::math::PointTable table(count);

    // All hashes first, kept where the map goes, so that each table slot can be fetched well
    // ahead of its lookup; the lookups then turn them into the map.
    for (std::size_t place = 0; place < count; ++place)
        remap[place] = hashOf(vertices[place].coord);
    int merged = 0;
    for (std::size_t place = 0; place < count; ++place) {
        if (place + PREFETCH_DISTANCE < count)
            __builtin_prefetch(table.slotFor(remap[place + PREFETCH_DISTANCE]));
        const std::uint32_t hash = remap[place];
        remap[place] = static_cast<std::uint32_t>(place);
        CVertexO& vertex = vertices[place];
        if (vertex.isDeleted())
            continue;
        const std::uint32_t first = table.findOrAdd(hash, static_cast<std::uint32_t>(place), [&](std::uint32_t other) {
            return samePoint(vertices[other].coord, vertex.coord);
        });
        if (first == place) {
            live.push_back(first);
            continue;
        }
        remap[place] = first;
        vertex.setDeleted();
        --mesh.vn;
        ++merged;
    }
    liveKnown = true;
    if (merged > 0)
        rewriteCorners();
    qel::scene::MeshCleaner::removeDegenerateFaces(mesh);
    return merged;
}

void FastMeshCleaner::rewriteCorners()
{
    CVertexO* vertices = mesh.vert.data();
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            if (face.v[corner])
                face.v[corner] = vertices + remap[static_cast<std::size_t>(face.v[corner] - vertices)];
        }
    }
}

int FastMeshCleaner::removeUnreferencedVertices()
{
    if (!liveKnown)
        collectLiveVertices();
    CVertexO* vertices = mesh.vert.data();
    const std::uint32_t referenced = qel::scene::VertexUserBits::newBit();
    for (std::uint32_t place : live)
        vertices[place].clearFlag(referenced);
    for (CFaceO& face : mesh.face) {
        if (face.isDeleted())
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            if (CVertexO* vertex = face.v[corner]) {
                vertex->setFlag(referenced);
                cornersOnDeleted = cornersOnDeleted || vertex->isDeleted();
            }
        }
    }
    cornersChecked = true;
    int removed = 0;
    std::size_t kept = 0;
    for (std::uint32_t place : live) {
        CVertexO& vertex = vertices[place];
        if (vertex.hasFlag(referenced)) {
            live[kept++] = place;
            continue;
        }
        vertex.setDeleted();
        --mesh.vn;
        ++removed;
    }
    live.resize(kept);
    qel::scene::VertexUserBits::deleteBit(referenced);
    return removed;
}

void FastMeshCleaner::compactVertices()
{
    // Room beyond the vertices that was never used holds no memory: it stays.
    if (static_cast<std::size_t>(mesh.vn) == mesh.vert.size())
        return;
    if (!liveKnown)
        collectLiveVertices();
    // Corners that will have no vertex become null while the pointers still lead somewhere.
    // Live faces on deleted vertices are rare enough to be looked for only when the
    // unreferenced step, which touched every corner anyway, found one or did not run.
    const bool checkCorners = !cornersChecked || cornersOnDeleted;
    for (CFaceO& face : mesh.face) {
        const bool deleted = face.isDeleted();
        if (!deleted && !checkCorners)
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            CVertexO*& vertex = face.v[corner];
            if (vertex && (deleted || vertex->isDeleted()))
                vertex = nullptr;
        }
    }
    CVertexO* vertices = mesh.vert.data();
    const std::uintptr_t oldBase = reinterpret_cast<std::uintptr_t>(vertices);
    remap.resize(mesh.vert.size());
    std::uint32_t next = 0;
    for (std::uint32_t place : live) {
        remap[place] = next;
        if (place != next)
            vertices[next] = vertices[place];
        ++next;
    }
    mesh.vert.resize(live.size());
    releaseSpareStorage();
    CVertexO* newBase = mesh.vert.data();
    // On integers: the old block may be gone.
    for (CFaceO& face : mesh.face) {
        for (int corner = 0; corner < 3; ++corner) {
            CVertexO*& vertex = face.v[corner];
            if (vertex) {
                const std::uintptr_t oldPlace = (reinterpret_cast<std::uintptr_t>(vertex) - oldBase) / sizeof(CVertexO);
                vertex = newBase + remap[oldPlace];
            }
        }
    }
    live.clear();
    liveKnown = false;
    cornersChecked = false;
    std::vector<std::uint32_t>().swap(remap);
}

void FastMeshCleaner::releaseSpareStorage()
{
    CMeshO::VertexVector& vertices = mesh.vert;
#if defined(Q_OS_LINUX)
    // The pages behind the survivors go back to the system before the survivors move into
    // storage of their own, so that both blocks are never resident in full at once.
    const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(vertices.data() + vertices.size()) + page - 1) & ~(page - 1);
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(vertices.data() + vertices.capacity()) & ~(page - 1);
    if (end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
#endif
    vertices.shrink_to_fit();
}

} // namespace scene
} // namespace io
} // namespace qel
