// The binary model entry of projects: its byte layout read back by hand, and the reader's
// checks of what a header announces.
#include "mesh/meshfixtures.h"
#include "module_scene/mesh/modelentry.h"
#include "support/logcapture.h"

#include <QBuffer>
#include <cstdint>
#include <cstring>
#include <limits>
#include <gtest/gtest.h>

namespace qel {
namespace test {
namespace {

using scene::CFaceO;
using scene::CMeshO;
using scene::Color4b;
using scene::ModelEntry;

// Little-endian fields decoded byte by byte, whatever the machine's order.
std::uint32_t u32At(const QByteArray& bytes, int offset)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = (value << 8) | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

double doubleAt(const QByteArray& bytes, int offset)
{
    std::uint64_t bits = 0;
    for (int i = 7; i >= 0; --i)
        bits = (bits << 8) | static_cast<unsigned char>(bytes[offset + i]);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

Point pointAt(const QByteArray& bytes, int offset)
{
    return Point(doubleAt(bytes, offset), doubleAt(bytes, offset + 8), doubleAt(bytes, offset + 16));
}

QByteArray writeEntry(const CMeshO& mesh)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    const bool abort = false;
    QString reason;
    EXPECT_TRUE(ModelEntry::write(mesh, &buffer, abort, reason)) << qPrintable(reason);
    return bytes;
}

// Five vertices, the second deleted; face 1 uses it, face 3 is itself deleted. Faces carry
// colours, normals and flags, vertices normals and flags.
struct EntryMesh
{
    EntryMesh()
    {
        buildMesh(mesh,
                  {Point(0.5, -1.0, 2.0), Point(9.0, 9.0, 9.0), Point(1.25, 0.0, 3.0), Point(-4.0, 2.5, 0.125),
                   Point(7.0, 6.0, -5.0)},
                  {{0, 2, 3}, {0, 1, 2}, {2, 4, 3}, {0, 2, 4}});
        mesh.vert[1].setDeleted();
        --mesh.vn;
        for (std::size_t v = 0; v < mesh.vert.size(); ++v) {
            mesh.vert[v].normal = Point(0.0, 0.6, 0.8 + v);
            mesh.vert[v].flags |= 0x400u << v;
        }
        mesh.face.enableColor();
        for (std::size_t f = 0; f < mesh.face.size(); ++f) {
            mesh.face[f].normal = Point(f + 0.5, -1.0, 1e-7);
            mesh.face[f].flags = 0x40000u | static_cast<std::uint32_t>(f << 8);
            mesh.face.colors()[f] = Color4b::fromRgba(static_cast<unsigned char>(10 + f), 20, 30, 255);
        }
        mesh.face[3].setDeleted();
    }

    CMeshO mesh;
};

TEST(ModelEntry, BytesFollowTheLayoutWithDeletedVerticesRenumbered)
{
    EntryMesh source;
    LogCapture log;
    const QByteArray bytes = writeEntry(source.mesh);

    // Live vertices 0, 2, 3, 4 become 0, 1, 2, 3; face 1 is left out with its colour.
    const std::uint32_t vertices = 4;
    const std::uint32_t faces = 3;
    ASSERT_EQ(8 + 52 * vertices + 40 * faces + 4 * faces, static_cast<std::uint32_t>(bytes.size()));
    EXPECT_EQ(vertices, u32At(bytes, 0));
    EXPECT_EQ(faces, u32At(bytes, 4));
    EXPECT_EQ(1, log.count("vert 1 is deleted!", 2000));

    const int oldPlaces[4] = {0, 2, 3, 4};
    for (int v = 0; v < 4; ++v) {
        const int record = 8 + 52 * v;
        const scene::CVertexO& expected = source.mesh.vert[static_cast<std::size_t>(oldPlaces[v])];
        EXPECT_EQ(expected.coord, pointAt(bytes, record)) << v;
        EXPECT_EQ(expected.normal, pointAt(bytes, record + 24)) << v;
        EXPECT_EQ(expected.flags, u32At(bytes, record + 48)) << v;
    }

    const int faceBase = 8 + 52 * 4;
    const std::uint32_t expectedCorners[3][3] = {{0, 1, 2}, {1, 3, 2}, {0, 1, 3}};
    const int oldFaces[3] = {0, 2, 3};
    for (int f = 0; f < 3; ++f) {
        const int record = faceBase + 40 * f;
        const CFaceO& expected = source.mesh.face[static_cast<std::size_t>(oldFaces[f])];
        for (int corner = 0; corner < 3; ++corner)
            EXPECT_EQ(expectedCorners[f][corner], u32At(bytes, record + 4 * corner)) << f;
        EXPECT_EQ(expected.normal, pointAt(bytes, record + 12)) << f;
        EXPECT_EQ(expected.flags, u32At(bytes, record + 36)) << f;
    }
    // The deleted face is written with its flag.
    EXPECT_TRUE(u32At(bytes, faceBase + 80 + 36) & CFaceO::DELETED);

    const int colorBase = faceBase + 40 * 3;
    for (int f = 0; f < 3; ++f) {
        const Color4b& expected = source.mesh.face.colors()[static_cast<std::size_t>(oldFaces[f])];
        for (int channel = 0; channel < 4; ++channel)
            EXPECT_EQ(expected[channel], static_cast<unsigned char>(bytes[colorBase + 4 * f + channel]));
    }
}

TEST(ModelEntry, MeshWithoutColoursOrVerticesHasNoColourBlock)
{
    CMeshO square;
    buildSquare(square);
    const QByteArray bytes = writeEntry(square);
    EXPECT_EQ(8 + 52 * 4 + 40 * 2, bytes.size());

    CMeshO empty;
    empty.face.enableColor();
    const QByteArray header = writeEntry(empty);
    ASSERT_EQ(8, header.size());
    EXPECT_EQ(0u, u32At(header, 0));
    EXPECT_EQ(0u, u32At(header, 4));
}

TEST(ModelEntry, RecordsReadBackAsWritten)
{
    EntryMesh source;
    QByteArray bytes = writeEntry(source.mesh);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    ModelEntry::Counts counts;
    bool hasColors = false;
    QString reason;
    ASSERT_TRUE(ModelEntry::readCounts(&buffer, counts, hasColors, reason)) << qPrintable(reason);
    EXPECT_TRUE(hasColors);

    CMeshO read;
    read.face.enableColor();
    const bool abort = false;
    ASSERT_TRUE(ModelEntry::readRecords(&buffer, counts, read, abort, reason)) << qPrintable(reason);
    ASSERT_EQ(4u, read.vert.size());
    ASSERT_EQ(3u, read.face.size());
    EXPECT_EQ(4, read.vn);
    EXPECT_EQ(2, read.fn);
    EXPECT_EQ(source.mesh.vert[2].coord, read.vert[1].coord);
    EXPECT_EQ((Triangle{1, 3, 2}), corners(read, 1));
    EXPECT_EQ(source.mesh.face[2].flags, read.face[1].flags);
    EXPECT_EQ(source.mesh.face.colors()[3], read.face.colors()[2]);
    EXPECT_EQ(Point(-4.0, -1.0, -5.0), read.bbox.min);
    EXPECT_EQ(Point(7.0, 6.0, 3.0), read.bbox.max);
}

TEST(ModelEntry, AbortedWriteStopsWithoutReason)
{
    EntryMesh source;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    const bool abort = true;
    QString reason = "stale";
    EXPECT_FALSE(ModelEntry::write(source.mesh, &buffer, abort, reason));
    EXPECT_TRUE(reason.isEmpty());
}

// What a header announces and what the bytes hold must agree.
TEST(ModelEntry, ReaderRefusesEntriesThatDisagreeWithTheirHeader)
{
    CMeshO square;
    buildSquare(square);
    const QByteArray good = writeEntry(square);
    struct Case
    {
        const char* what;
        QByteArray bytes;
        const char* reasonPart;
    };
    QByteArray outOfRange = good;
    outOfRange[8 + 52 * 4 + 40 + 4] = 4;
    QByteArray nonFinite = good;
    const double infinity = std::numeric_limits<double>::infinity();
    nonFinite.replace(8 + 52, sizeof infinity, QByteArray(reinterpret_cast<const char*>(&infinity), sizeof infinity));
    const Case cases[] = {
        {"shorter than a header", good.left(5), "less than its header"},
        {"truncated records", good.left(good.size() - 1), "truncated"},
        {"colour block of the wrong size", good + QByteArray(5, '\x7f'), "colour block"},
        {"face index out of range", outOfRange, "face 1 refers to vertex 4 of 4"},
        {"coordinate not finite", nonFinite, "vertex 1"},
    };
    for (const Case& c : cases) {
        QByteArray bytes = c.bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        ModelEntry::Counts counts;
        bool hasColors = false;
        QString reason;
        bool ok = ModelEntry::readCounts(&buffer, counts, hasColors, reason);
        if (ok) {
            CMeshO read;
            const bool abort = false;
            ok = ModelEntry::readRecords(&buffer, counts, read, abort, reason);
        }
        EXPECT_FALSE(ok) << c.what;
        EXPECT_TRUE(reason.contains(c.reasonPart)) << c.what << ": " << qPrintable(reason);
    }
}

} // namespace
} // namespace test
} // namespace qel
