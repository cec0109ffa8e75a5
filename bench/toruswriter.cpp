#include "toruswriter.h"

#include <QByteArray>
#include <QFile>
#include <QtEndian>
#include <cmath>
#include <cstring>
#if defined(Q_OS_UNIX)
#include <unistd.h>
#endif

namespace {

const double PI = 3.14159265358979323846;

// Writes what fill appends, a few MB at a time.
template<class Fill>
void writeChunked(QFile& file, long long count, Fill fill)
{
    QByteArray chunk;
    for (long long item = 0; item < count; ++item) {
        fill(chunk, item);
        if (chunk.size() > (4 << 20)) {
            file.write(chunk);
            chunk.clear();
        }
    }
    file.write(chunk);
}

} // namespace

TorusWriter::TorusWriter(long long wantedTriangles)
{
    rings = static_cast<int>(std::ceil(std::sqrt(wantedTriangles / 2.0)));
    segments = static_cast<int>(wantedTriangles / (2LL * rings));
}

long long TorusWriter::fileSize(bool ply) const
{
    return ply ? plyHeader().size() + 12 * gridPoints() + 13 * triangles() : 84 + 50 * triangles();
}

bool TorusWriter::write(const QString& path, bool ply) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    if (ply)
        writePly(file);
    else
        writeStl(file);
    // On disk before anything is timed, so that no write-back runs beside the reads.
    file.flush();
#if defined(Q_OS_UNIX)
    ::fsync(file.handle());
#endif
    return file.error() == QFile::NoError;
}

// The two triangles of grid square (ring, segment), as grid point numbers.
std::array<long long, 6> TorusWriter::square(int ring, int segment) const
{
    const int nextRing = (ring + 1) % rings;
    const int nextSegment = (segment + 1) % segments;
    auto number = [this](int r, int s) { return static_cast<long long>(r) * segments + s; };
    return {number(ring, segment), number(nextRing, segment), number(nextRing, nextSegment),
            number(ring, segment), number(nextRing, nextSegment), number(ring, nextSegment)};
}

TorusWriter::Point TorusWriter::pointNumbered(long long number) const
{
    return point(static_cast<int>(number / segments), static_cast<int>(number % segments));
}

TorusWriter::Point TorusWriter::point(int ring, int segment) const
{
    const double major = 100.0;
    const double minor = 30.0;
    const double u = 2.0 * PI * ring / rings;
    const double v = 2.0 * PI * segment / segments;
    return {static_cast<float>((major + minor * std::cos(v)) * std::cos(u)),
            static_cast<float>((major + minor * std::cos(v)) * std::sin(u)), static_cast<float>(minor * std::sin(v))};
}

void TorusWriter::writeStl(QFile& file) const
{
    const QByteArray header = QByteArray("qel-bench torus").leftJustified(80, ' ');
    char count[4];
    qToLittleEndian<quint32>(static_cast<quint32>(triangles()), count);
    file.write(header);
    file.write(count, 4);
    writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
        const std::array<long long, 6> corners = square(static_cast<int>(number / segments),
                                                        static_cast<int>(number % segments));
        appendTriangle(chunk, pointNumbered(corners[0]), pointNumbered(corners[1]), pointNumbered(corners[2]));
        appendTriangle(chunk, pointNumbered(corners[3]), pointNumbered(corners[4]), pointNumbered(corners[5]));
    });
}

QByteArray TorusWriter::plyHeader() const
{
    return QStringLiteral("ply\nformat binary_little_endian 1.0\nelement vertex %1\nproperty float x\n"
                          "property float y\nproperty float z\nelement face %2\n"
                          "property list uchar int vertex_indices\nend_header\n")
        .arg(gridPoints())
        .arg(triangles())
        .toLatin1();
}

void TorusWriter::writePly(QFile& file) const
{
    file.write(plyHeader());
    writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
        const Point p = pointNumbered(number);
        for (float value : {p.x, p.y, p.z})
            appendFloat(chunk, value);
    });
    writeChunked(file, gridPoints(), [this](QByteArray& chunk, long long number) {
        const std::array<long long, 6> corners = square(static_cast<int>(number / segments),
                                                        static_cast<int>(number % segments));
        for (int triangle = 0; triangle < 2; ++triangle) {
            chunk.append(char(3));
            for (int corner = 0; corner < 3; ++corner) {
                char bytes[4];
                qToLittleEndian<qint32>(static_cast<qint32>(corners[3 * triangle + corner]), bytes);
                chunk.append(bytes, 4);
            }
        }
    });
}

void TorusWriter::appendFloat(QByteArray& data, float value)
{
    quint32 word;
    std::memcpy(&word, &value, 4);
    char bytes[4];
    qToLittleEndian<quint32>(word, bytes);
    data.append(bytes, 4);
}

// With its facet normal, which differs from triangle to triangle.
void TorusWriter::appendTriangle(QByteArray& data, const Point& a, const Point& b, const Point& c)
{
    const float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
    const float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
    float nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
    const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
    if (length > 0.0f) {
        nx /= length;
        ny /= length;
        nz /= length;
    }
    for (float value : {nx, ny, nz, a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z})
        appendFloat(data, value);
    data.append(2, '\0');
}
