#include "plugins/io/stl/stlloader.h"

#include "module_scene/mesh/meshallocator.h"
#include "module_scene/meshmodel.h"
#include "plugins/io/readers/stlparser.h"

#include <QFile>
#include <limits>

namespace qel {
namespace io {
namespace plugins {

using qel::scene::CMeshO;
using qel::scene::CVertexO;
using qel::scene::MeshAllocator;

namespace {

// Appends each batch as new vertices and faces of the mesh.
class MeshSink : public readers::StlParser::TriangleSink
{
public:
    explicit MeshSink(CMeshO& mesh) : mesh(mesh), tooLarge(false) {}

    void expect(std::size_t triangles) override
    {
        if (!fits(triangles))
            return;
        mesh.vert.reserve(3 * triangles);
        mesh.face.reserve(triangles);
    }

    void add(const double* corners, std::size_t triangles) override
    {
        if (tooLarge || !fits(mesh.face.size() + triangles)) {
            tooLarge = true;
            return;
        }
        const std::size_t firstVertex = MeshAllocator::addVertices(mesh, 3 * triangles);
        const std::size_t firstFace = MeshAllocator::addFaces(mesh, triangles);
        CVertexO* vertex = mesh.vert.data() + firstVertex;
        for (std::size_t t = 0; t < triangles; ++t) {
            qel::scene::CFaceO& face = mesh.face[firstFace + t];
            for (int corner = 0; corner < 3; ++corner, ++vertex, corners += 3) {
                vertex->coord = CVertexO::Point(corners[0], corners[1], corners[2]);
                face.v[corner] = vertex;
            }
        }
    }

    bool isTooLarge() const { return tooLarge; }

private:
    static bool fits(std::size_t triangles)
    {
        return 3 * triangles <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    }

    CMeshO& mesh;
    bool tooLarge;
};

} // namespace

scene::Loader* StlLoader::create()
{
    return new StlLoader;
}

bool StlLoader::checkHead(const QByteArray& head) const
{
    return head.size() >= 84 || head.trimmed().startsWith("solid");
}

bool StlLoader::readFile(QFile& file)
{
    readers::ReadMonitor monitor(file.size(), monitorCallback());
    readers::StlParser parser(&monitor);
    mesh = new qel::scene::MeshModel;
    MeshSink sink(mesh->cm);
    if (!parser.parse(file, sink))
        return failParse(parser);
    if (sink.isTooLarge()) {
        discardMesh();
        return fail(tr("the mesh is too large: %1 triangles").arg(parser.getTriangleCount()));
    }
    return finishMesh(qel::scene::MeshModel::NOTHING);
}

} // namespace plugins
} // namespace io
} // namespace qel
