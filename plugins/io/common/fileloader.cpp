#include "plugins/io/common/fileloader.h"

#include "kernel/log/logger.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/meshmodel.h"
#include "plugins/io/readers/meshparser.h"
#include "plugins/io/readers/rawmesh.h"
#include "plugins/io/readers/readwarnings.h"

#include <QFile>
#include <QFileInfo>
#include <boost/bind/bind.hpp>
#include <limits>

namespace qel {
namespace io {
namespace plugins {

using qel::scene::CMeshO;
using qel::scene::CVertexO;
using qel::scene::Color4b;
using qel::scene::MeshAllocator;
using qel::scene::MeshModel;

namespace {

const qint64 HEAD_SIZE = 512;

template <typename Vector>
void release(Vector& vector)
{
    Vector().swap(vector);
}

} // namespace

bool FileLoader::checkFile(QString file)
{
    const QFileInfo info(file);
    if (!info.isFile() || !info.isReadable() || info.size() == 0)
        return false;
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly))
        return false;
    return checkHead(device.read(HEAD_SIZE));
}

bool FileLoader::checkHead(const QByteArray&) const
{
    return true;
}

bool FileLoader::loadMeshFile()
{
    const QFileInfo info(fileName);
    if (!info.exists())
        return fail(tr("the file does not exist"));
    if (!info.isFile())
        return fail(tr("it is not a file"));
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(tr("the file cannot be opened (%1)").arg(file.errorString()));
    if (file.size() == 0)
        return fail(tr("the file is empty"));
    if (aborted)
        return fail(tr("loading was aborted"));
    return readFile(file);
}

readers::ReadMonitor::Callback FileLoader::monitorCallback()
{
    using namespace boost::placeholders;
    return boost::bind(&FileLoader::reportReading, this, _1, _2);
}

bool FileLoader::failParse(const readers::MeshParser& parser)
{
    if (parser.wasStopped() || aborted)
        return fail(tr("loading was aborted"));
    return fail(parser.getError());
}

void FileLoader::logWarnings(const readers::ReadWarnings& warnings) const
{
    for (const QString& warning : warnings.list())
        log::Logger::log(2000, "plugins/io/common/fileloader", __LINE__, "qel::io::plugins::FileLoader::readFile", nullptr,
                         tr("While reading '%1': %2").arg(fileName, warning));
}

bool FileLoader::buildMesh(readers::RawMesh& raw)
{
    const std::size_t vertices = raw.vertexCount();
    const std::size_t faces = raw.faceCount();
    if (faces == 0 && vertices > 0)
        return fail(tr("no triangles, a point cloud of %1 vertices: the file holds no faces").arg(vertices));
    if (faces == 0)
        return fail(tr("the file holds no faces"));
    if (vertices > static_cast<std::size_t>(std::numeric_limits<int>::max())
        || faces > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return fail(tr("the mesh is too large: %1 vertices and %2 triangles").arg(vertices).arg(faces));

    if (aborted)
        return fail(tr("loading was aborted"));

    int mask = MeshModel::NOTHING;
    if (raw.hasNormals())
        mask |= MeshModel::VERTEX_NORMAL;
    if (raw.hasColors())
        mask |= MeshModel::VERTEX_COLOR;
    if (raw.hasFaceColors())
        mask |= MeshModel::FACE_COLOR;

    mesh = new MeshModel;
    CMeshO& cm = mesh->cm;
    if (!prepared.takeFaces(cm, faces)) {
        cm.face.reserve(faces);
        MeshAllocator::addFaces(cm, faces);
    }
    mesh->Enable(mask);
    fillVertices(cm, raw);
    fillFaces(cm, raw);
    return finishMesh(mask);
}

void FileLoader::fillVertices(CMeshO& cm, readers::RawMesh& raw)
{
    const std::size_t vertices = raw.vertexCount();
    auto fill = [&raw](CVertexO& vertex, std::size_t place) {
        const double* position = &raw.positions[3 * place];
        vertex.coord = CVertexO::Point(position[0], position[1], position[2]);
        if (raw.hasNormals()) {
            const double* normal = &raw.normals[3 * place];
            vertex.normal = CVertexO::Point(normal[0], normal[1], normal[2]);
        }
        if (raw.hasColors()) {
            const std::uint8_t* color = &raw.colors[4 * place];
            vertex.color = Color4b::fromRgba(color[0], color[1], color[2], color[3]);
        }
    };
    if (prepared.takeVertices(cm, vertices)) {
        for (std::size_t place = 0; place < vertices; ++place)
            fill(cm.vert[place], place);
    } else {
        // Each vertex is made and filled in one go, while its memory is at hand.
        cm.vert.reserve(vertices);
        for (std::size_t place = 0; place < vertices; ++place)
            fill(cm.vert.emplace_back(), place);
        cm.vn = static_cast<int>(vertices);
    }
    release(raw.positions);
    release(raw.normals);
    release(raw.colors);
}

void FileLoader::fillFaces(CMeshO& cm, readers::RawMesh& raw)
{
    const std::size_t faces = raw.faceCount();
    CVertexO* base = cm.vert.data();
    for (std::size_t place = 0; place < faces; ++place) {
        qel::scene::CFaceO& face = cm.face[place];
        for (int corner = 0; corner < 3; ++corner)
            face.v[corner] = base + raw.faces[3 * place + corner];
    }
    if (raw.hasFaceColors() && cm.face.isColorEnabled()) {
        for (std::size_t place = 0; place < faces; ++place) {
            const std::uint8_t* color = &raw.faceColors[4 * place];
            cm.face.colors()[place] = Color4b::fromRgba(color[0], color[1], color[2], color[3]);
        }
    }
    release(raw.faces);
    release(raw.faceColors);
}

void FileLoader::prepareStorage(std::size_t faces, std::size_t vertices)
{
    // Room for an eighth more vertices than expected, so that a near guess needs no new block.
    prepared.start(faces, vertices, vertices + vertices / 8);
}

bool FileLoader::finishMesh(int mask)
{
    processMesh(mask);
    // processMesh built both adjacencies; the mask says so for later updates.
    mesh->dataMask |= MeshModel::DataMaskFaceAdjacency | MeshModel::DataMaskVertexFaceAdjacency;
    mesh->busy = false;
    return true;
}

} // namespace plugins
} // namespace io
} // namespace qel
