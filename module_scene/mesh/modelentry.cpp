#include "module_scene/mesh/modelentry.h"

#include "kernel/log/logger.h"
#include "module_scene/mesh/cmesho.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace qel {
namespace scene {

namespace {

const char* const LogFile = "module_scene/mesh/modelentry";
// Records are gathered and read in blocks of this many bytes: few calls into the device,
// and a block that stays in the caches of the machine.
const std::size_t BlockBytes = 4u << 20;
const std::uint32_t NoIndex = std::numeric_limits<std::uint32_t>::max();

QString tr(const char* text)
{
    return QCoreApplication::translate("qel::scene::ModelEntry", text);
}

char* putU32(char* at, std::uint32_t value)
{
    qToLittleEndian<quint32>(value, at);
    return at + 4;
}

char* putDouble(char* at, double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    qToLittleEndian<quint64>(bits, at);
    return at + 8;
}

char* putPoint(char* at, const CVertexO::Point& point)
{
    at = putDouble(at, point[0]);
    at = putDouble(at, point[1]);
    return putDouble(at, point[2]);
}

std::uint32_t getU32(const char* at)
{
    return qFromLittleEndian<quint32>(at);
}

double getDouble(const char* at)
{
    const quint64 bits = qFromLittleEndian<quint64>(at);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

CVertexO::Point getPoint(const char* at)
{
    return CVertexO::Point(getDouble(at), getDouble(at + 8), getDouble(at + 16));
}

bool isFinite(const CVertexO::Point& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

// Fixed-size records gathered into one block and handed to the device when it is full.
class BlockWriter
{
public:
    explicit BlockWriter(QIODevice* device) : device(device), block(BlockBytes) {}

    char* record(std::size_t size)
    {
        if (used + size > block.size())
            flush();
        char* at = block.data() + used;
        used += size;
        return at;
    }

    bool flush()
    {
        if (used > 0 && ok)
            ok = device->write(block.data(), static_cast<qint64>(used)) == static_cast<qint64>(used);
        used = 0;
        return ok;
    }

    bool isOk() const { return ok; }

private:
    QIODevice* device;
    std::vector<char> block;
    std::size_t used = 0;
    bool ok = true;
};

// Reads `count` records of `size` bytes in large blocks and hands each to `take` with its
// number; stops when take says no, on abort or on a short read.
template <class Take>
bool readBlocks(QIODevice* device, std::uint32_t count, std::size_t size, const bool& abort, QString& reason,
                Take take)
{
    const std::size_t perBlock = std::max<std::size_t>(1, BlockBytes / size);
    std::vector<char> block(std::min<std::size_t>(perBlock, std::max<std::uint32_t>(count, 1)) * size);
    std::uint32_t done = 0;
    while (done < count) {
        if (abort) {
            reason.clear();
            return false;
        }
        const std::size_t records = std::min<std::size_t>(perBlock, count - done);
        const qint64 bytes = static_cast<qint64>(records * size);
        if (device->read(block.data(), bytes) != bytes) {
            reason = tr("the entry can't be read: %1").arg(device->errorString());
            return false;
        }
        for (std::size_t i = 0; i < records; ++i, ++done) {
            if (!take(block.data() + i * size, done))
                return false;
        }
    }
    return true;
}

void logCorner(const char* text)
{
    log::Logger::log(2000, LogFile, 131, "qel::scene::SceneVCGModel::saveTo", nullptr, text);
}

// The new number of the corner, or NoIndex after logging why the face can't be written.
std::uint32_t cornerIndex(const CMeshO& mesh, const std::vector<std::uint32_t>& numbers, const CFaceO& face,
                          int corner)
{
    static const char* const Deleted[3] = {"vert 0 is deleted!", "vert 1 is deleted!", "vert 2 is deleted!"};
    static const char* const Missing[3] = {"vert 0 not found!", "vert 1 not found!", "vert 2 not found!"};
    const CVertexO* vertex = face.v[corner];
    const CVertexO* first = mesh.vert.data();
    // Pointers are compared as addresses: one outside the vector is not dereferenced.
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(vertex);
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(first);
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(first + mesh.vert.size());
    if (!vertex || address < begin || address >= end || (address - begin) % sizeof(CVertexO) != 0) {
        logCorner(Missing[corner]);
        return NoIndex;
    }
    if (vertex->isDeleted()) {
        logCorner(Deleted[corner]);
        return NoIndex;
    }
    return numbers[static_cast<std::size_t>(vertex - first)];
}

void putHeader(char* at, const ModelEntry::Counts& counts)
{
    putU32(putU32(at, counts.vertices), counts.faces);
}

} // namespace

bool ModelEntry::write(const CMeshO& mesh, QIODevice* device, const bool& abort, QString& reason)
{
    reason.clear();
    BlockWriter writer(device);
    // The raw sizes stand here until the live counts are known.
    Counts counts;
    counts.vertices = static_cast<std::uint32_t>(mesh.vert.size());
    counts.faces = static_cast<std::uint32_t>(mesh.face.size());
    putHeader(writer.record(HeaderSize), counts);

    std::vector<std::uint32_t> numbers(mesh.vert.size(), NoIndex);
    std::uint32_t vertices = 0;
    for (std::size_t place = 0; place < mesh.vert.size(); ++place) {
        const CVertexO& vertex = mesh.vert[place];
        if (vertex.isDeleted())
            continue;
        if (abort)
            return false;
        char* at = putPoint(writer.record(VertexRecordSize), vertex.coord);
        putU32(putPoint(at, vertex.normal), vertex.flags);
        numbers[place] = vertices++;
    }

    const bool withColors = mesh.face.isColorEnabled() && !mesh.face.empty();
    std::vector<bool> written(withColors ? mesh.face.size() : 0);
    std::uint32_t faces = 0;
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        if (abort)
            return false;
        const CFaceO& face = mesh.face[place];
        std::uint32_t corners[3];
        bool complete = true;
        for (int corner = 0; corner < 3 && complete; ++corner) {
            corners[corner] = cornerIndex(mesh, numbers, face, corner);
            complete = corners[corner] != NoIndex;
        }
        if (!complete)
            continue;
        char* at = writer.record(FaceRecordSize);
        for (std::uint32_t corner : corners)
            at = putU32(at, corner);
        putU32(putPoint(at, face.normal), face.flags);
        if (withColors)
            written[place] = true;
        ++faces;
    }

    // Only the colours of the faces written: the reader wants one per face of the entry.
    for (std::size_t place = 0; withColors && place < mesh.face.size(); ++place) {
        if (written[place])
            std::memcpy(writer.record(ColorRecordSize), mesh.face.colors()[place].rgba, ColorRecordSize);
    }

    char header[HeaderSize];
    counts.vertices = vertices;
    counts.faces = faces;
    putHeader(header, counts);
    if (!writer.flush() || !device->seek(0) || device->write(header, HeaderSize) != HeaderSize) {
        reason = tr("the mesh can't be written: %1").arg(device->errorString());
        return false;
    }
    return !abort;
}

bool ModelEntry::readCounts(QIODevice* device, Counts& counts, bool& hasColors, QString& reason)
{
    char header[HeaderSize];
    const qint64 size = device->size();
    if (size < HeaderSize || device->read(header, HeaderSize) != HeaderSize) {
        reason = tr("it holds %1 bytes, less than its header of %2").arg(size).arg(HeaderSize);
        return false;
    }
    counts.vertices = getU32(header);
    counts.faces = getU32(header + 4);
    const qint64 records = HeaderSize + VertexRecordSize * counts.vertices + FaceRecordSize * counts.faces;
    const qint64 colors = ColorRecordSize * counts.faces;
    if (size < records) {
        reason = tr("it is truncated: its header announces %1 vertices and %2 faces in %3 bytes, it holds %4")
                     .arg(counts.vertices)
                     .arg(counts.faces)
                     .arg(records)
                     .arg(size);
        return false;
    }
    hasColors = size > records;
    if (hasColors && size - records != colors) {
        reason = tr("its colour block holds %1 bytes where %2 faces need %3").arg(size - records).arg(counts.faces).arg(colors);
        return false;
    }
    return true;
}

bool ModelEntry::readRecords(QIODevice* device, const Counts& counts, CMeshO& mesh, const bool& abort,
                             QString& reason)
{
    reason.clear();
    mesh.vert.resize(counts.vertices);
    mesh.face.resize(counts.faces);
    mesh.vn = static_cast<int>(counts.vertices);
    mesh.fn = static_cast<int>(counts.faces);
    mesh.bbox.setEmpty();

    CVertexO* vertices = mesh.vert.data();
    const bool verticesRead =
        readBlocks(device, counts.vertices, VertexRecordSize, abort, reason, [&](const char* at, std::uint32_t i) {
            CVertexO& vertex = vertices[i];
            vertex.coord = getPoint(at);
            vertex.normal = getPoint(at + 24);
            vertex.flags = getU32(at + 48);
            if (vertex.isDeleted()) {
                --mesh.vn;
                return true;
            }
            if (!isFinite(vertex.coord)) {
                reason = tr("vertex %1 has a coordinate that isn't a finite number").arg(i);
                return false;
            }
            mesh.bbox.add(vertex.coord);
            return true;
        });
    if (!verticesRead)
        return false;

    const bool facesRead =
        readBlocks(device, counts.faces, FaceRecordSize, abort, reason, [&](const char* at, std::uint32_t i) {
            CFaceO& face = mesh.face[i];
            for (int corner = 0; corner < 3; ++corner) {
                const std::uint32_t index = getU32(at + 4 * corner);
                if (index >= counts.vertices) {
                    reason = tr("face %1 refers to vertex %2 of %3").arg(i).arg(index).arg(counts.vertices);
                    return false;
                }
                face.v[corner] = vertices + index;
            }
            face.normal = getPoint(at + 12);
            face.flags = getU32(at + 36);
            if (face.isDeleted())
                --mesh.fn;
            return true;
        });
    if (!facesRead || !mesh.face.isColorEnabled())
        return facesRead;

    Color4b* colors = mesh.face.colors().data();
    return readBlocks(device, counts.faces, ColorRecordSize, abort, reason, [colors](const char* at, std::uint32_t i) {
        std::memcpy(colors[i].rgba, at, ColorRecordSize);
        return true;
    });
}

} // namespace scene
} // namespace qel
