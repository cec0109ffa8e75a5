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

// Collects the corners of each batch as new vertices. The faces follow once the file has
// been read completely: STL's face i is made of vertices 3i, 3i + 1 and 3i + 2.
class VertexSink : public readers::StlParser::TriangleSink
{
public:
    explicit VertexSink(CMeshO::VertexVector& vertices) : vertices(vertices), tooLarge(false) {}

    void expect(std::size_t triangles) override
    {
        if (fits(triangles))
            vertices.reserve(3 * triangles);
    }

    void add(const double* corners, std::size_t triangles) override
    {
        if (tooLarge || !fits(vertices.size() / 3 + triangles)) {
            tooLarge = true;
            return;
        }
        const std::size_t first = vertices.size();
        vertices.resize(first + 3 * triangles);
        for (CVertexO* vertex = vertices.data() + first; vertex != vertices.data() + vertices.size(); ++vertex, corners += 3)
            vertex->coord = CVertexO::Point(corners[0], corners[1], corners[2]);
    }

    bool isTooLarge() const { return tooLarge; }

private:
    static bool fits(std::size_t triangles)
    {
        return 3 * triangles <= static_cast<std::size_t>(std::numeric_limits<int>::max());
    }

    CMeshO::VertexVector& vertices;
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
    // The mesh is made only from a complete read, so that a failure leaves none behind.
    CMeshO::VertexVector vertices;
    VertexSink sink(vertices);
    if (!parser.parse(file, sink))
        return failParse(parser);
    if (sink.isTooLarge())
        return fail(tr("the mesh is too large: %1 triangles").arg(parser.getTriangleCount()));
    if (aborted)
        return fail(tr("loading was aborted"));

    mesh = new qel::scene::MeshModel;
    CMeshO& cm = mesh->cm;
    cm.vert.swap(vertices);
    cm.vn = static_cast<int>(cm.vert.size());
    const std::size_t triangles = cm.vert.size() / 3;
    cm.face.reserve(triangles);
    MeshAllocator::addFaces(cm, triangles);
    CVertexO* vertex = cm.vert.data();
    for (qel::scene::CFaceO& face : cm.face) {
        for (int corner = 0; corner < 3; ++corner)
            face.v[corner] = vertex++;
    }
    return finishMesh(qel::scene::MeshModel::NOTHING);
}

} // namespace plugins
} // namespace io
} // namespace qel
