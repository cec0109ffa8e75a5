// The import plug-ins end to end: each format read into a cleaned mesh, and every kind of
// bad file refused with a message that names the file and the reason.
#include "support/logcapture.h"
#include "test_loadfiles.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {
namespace test {
namespace {

using scene::CMeshO;
using scene::Color4b;

class ReadersTest : public LoadFixture
{
protected:
    // Loads a file that must be refused; returns the message.
    QString refused(const QString& name, const QByteArray& contents)
    {
        const QString path = write(name, contents);
        LogCapture log;
        Result result = load(path);
        EXPECT_FALSE(result.model) << qPrintable(name);
        EXPECT_TRUE(result.error.contains(path)) << qPrintable(result.error);
        EXPECT_EQ(1, log.count(result.error, 1000)) << qPrintable(name);
        return result.error;
    }
};

TEST_F(ReadersTest, StlBinaryAndAsciiGiveTheSameClosedBox)
{
    const std::vector<StlTriangle> box = boxTriangles(0, 0, 0, 2, 4, 6);
    // A binary header may begin with "solid": the size decides.
    std::vector<std::vector<QString>> logs;
    for (const QByteArray& contents : {binaryStl(box), binaryStl(box, "solid but binary"), asciiStl(box)}) {
        LogCapture log;
        Result result = load(write("box.stl", contents));
        ASSERT_TRUE(result.model) << qPrintable(result.error);
        logs.push_back(pipelineLines(log));
        const CMeshO& cm = result.model->cm;
        EXPECT_EQ(8, cm.vn);
        EXPECT_EQ(12, cm.fn);
        EXPECT_EQ(8u, cm.vert.size());
        EXPECT_FALSE(result.model->busy);
        EXPECT_EQ(io::scene::Loader::Center(1.0f, 2.0f, 3.0f), result.center);
        EXPECT_EQ(CMeshO::VertexVector::value_type::Point(-1.0, -2.0, -3.0), cm.bbox.min);
        EXPECT_EQ(CMeshO::VertexVector::value_type::Point(1.0, 2.0, 3.0), cm.bbox.max);
    }
    // Both readers merge the 36 corners as they read; the log counts them as the file has them.
    ASSERT_GE(logs[0].size(), 2u);
    EXPECT_EQ(QStringLiteral("# Vertices: 36, # Faces: 12, # Triangles: 12"), logs[0][0]);
    EXPECT_EQ(QStringLiteral("Removed 28 duplicate and 0 unreferenced vertices"), logs[0][1]);
    EXPECT_EQ(logs[0], logs[1]);
    EXPECT_EQ(logs[0], logs[2]);
}

// Every corner written out as a vertex of its own, for the cleaning to merge.
QByteArray objWithOwnCorners(const std::vector<StlTriangle>& triangles)
{
    QByteArray data;
    for (const StlTriangle& t : triangles) {
        for (int corner = 0; corner < 3; ++corner)
            data += QByteArray("v ") + QByteArray::number(double(t[3 * corner]), 'g', 17) + ' '
                    + QByteArray::number(double(t[3 * corner + 1]), 'g', 17) + ' '
                    + QByteArray::number(double(t[3 * corner + 2]), 'g', 17) + '\n';
    }
    for (std::size_t face = 0; face < triangles.size(); ++face)
        data += QStringLiteral("f %1 %2 %3\n").arg(3 * face + 1).arg(3 * face + 2).arg(3 * face + 3).toLatin1();
    return data;
}

// A torus of rings x segments grid points, two triangles per grid square: as many points
// as half its triangles, the count a loader expects of a closed surface.
std::vector<StlTriangle> torusTriangles(int rings, int segments)
{
    auto point = [&](int ring, int segment, float* out) {
        const double u = 2.0 * M_PI * (ring % rings) / rings;
        const double v = 2.0 * M_PI * (segment % segments) / segments;
        out[0] = static_cast<float>((3.0 + std::cos(v)) * std::cos(u));
        out[1] = static_cast<float>((3.0 + std::cos(v)) * std::sin(u));
        out[2] = static_cast<float>(std::sin(v));
    };
    std::vector<StlTriangle> triangles;
    for (int ring = 0; ring < rings; ++ring) {
        for (int segment = 0; segment < segments; ++segment) {
            StlTriangle first, second;
            point(ring, segment, &first[0]);
            point(ring + 1, segment, &first[3]);
            point(ring + 1, segment + 1, &first[6]);
            point(ring, segment, &second[0]);
            point(ring + 1, segment + 1, &second[3]);
            point(ring, segment + 1, &second[6]);
            triangles.push_back(first);
            triangles.push_back(second);
        }
    }
    return triangles;
}

class StlMergeTest : public ReadersTest
{
protected:
    // Loads the triangles as binary STL, whose reader merges the corners, and as OBJ with a
    // vertex for every corner, which the cleaning merges: the meshes must be the same, and so
    // must be what the loads tell the user.
    void expectSameMeshes(const std::vector<StlTriangle>& triangles)
    {
        LogCapture log;
        merged = load(write("merged.stl", binaryStl(triangles)));
        mergedLog = logTexts(log);
        log.clear();
        cleaned = load(write("cleaned.obj", objWithOwnCorners(triangles)));
        ASSERT_TRUE(merged.model && cleaned.model) << qPrintable(merged.error + cleaned.error);
        EXPECT_EQ(logTexts(log), mergedLog);
        EXPECT_EQ(pipelineLines(log).size(), mergedLog.size()) << "only the cleaning speaks";
        const CMeshO& a = merged.model->cm;
        const CMeshO& b = cleaned.model->cm;
        ASSERT_EQ(b.vn, a.vn);
        ASSERT_EQ(b.fn, a.fn);
        for (std::size_t place = 0; place < a.vert.size(); ++place) {
            EXPECT_EQ(b.vert[place].coord, a.vert[place].coord) << "vertex " << place;
            EXPECT_EQ(b.vert[place].normal, a.vert[place].normal) << "vertex " << place;
        }
        // The STL's storage was made beside the reading; the links must come out the same.
        auto placeOf = [](const CMeshO& mesh, const scene::CFaceO* face) { return face ? face - mesh.face.data() : -1; };
        for (std::size_t place = 0; place < a.face.size(); ++place) {
            EXPECT_EQ(&a.face, a.face[place].container);
            for (int corner = 0; corner < 3; ++corner) {
                EXPECT_EQ(b.face[place].v[corner] - b.vert.data(), a.face[place].v[corner] - a.vert.data());
                EXPECT_EQ(placeOf(b, b.face.faceFaceLinks()[place].face[corner]),
                          placeOf(a, a.face.faceFaceLinks()[place].face[corner]));
                EXPECT_EQ(placeOf(b, b.face.vertexFaceLinks()[place].face[corner]),
                          placeOf(a, a.face.vertexFaceLinks()[place].face[corner]));
            }
        }
        EXPECT_EQ(b.bbox.min, a.bbox.min);
        EXPECT_EQ(b.bbox.max, a.bbox.max);
    }

    static std::vector<QString> logTexts(const LogCapture& log)
    {
        std::vector<QString> texts;
        for (const log::LogRecord& record : log.records())
            texts.push_back(record.text);
        return texts;
    }

    bool mergedLogHas(const QString& line) const
    {
        return std::find(mergedLog.begin(), mergedLog.end(), line) != mergedLog.end();
    }

    Result merged;
    Result cleaned;
    std::vector<QString> mergedLog;
};

TEST_F(StlMergeTest, CornersMergedWhileReadingGiveTheMeshTheCleaningWouldGive)
{
    std::vector<StlTriangle> triangles = boxTriangles(0, 0, 0, 2, 4, 6);
    const float nextToOne = std::nextafter(1.0f, 2.0f);
    // -0 and +0 compare equal and merge; points one bit apart stay apart; a triangle with
    // two equal corners goes, and its corners with it.
    triangles.push_back({-0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 9.0f, nextToOne, 0.0f, 9.0f});
    triangles.push_back({5.0f, 5.0f, 5.0f, 5.0f, 5.0f, 5.0f, 7.0f, 7.0f, 7.0f});
    triangles.push_back({1.0f, 0.0f, 9.0f, 2.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f});

    expectSameMeshes(triangles);
    // Counted as the corners of the file: 45 of them, 33 repeated.
    EXPECT_TRUE(mergedLogHas("# Vertices: 45, # Faces: 15, # Triangles: 15"));
    EXPECT_TRUE(mergedLogHas("Removed 33 duplicate and 2 unreferenced vertices"));
    EXPECT_TRUE(mergedLogHas("# Vertices after cleaning: 10/10"));
    ASSERT_TRUE(merged.model);
    EXPECT_EQ(10, merged.model->cm.vn);
    EXPECT_EQ(14, merged.model->cm.fn);
}

// The vertex storage made beside the reading fits a closed surface exactly, and one with a
// few points more; a mesh with far more points is built without it.
TEST_F(StlMergeTest, StorageMadeBesideTheReadingFitsOrIsDropped)
{
    std::vector<StlTriangle> torus = torusTriangles(8, 12);
    expectSameMeshes(torus);
    ASSERT_TRUE(merged.model);
    EXPECT_EQ(96, merged.model->cm.vn);

    torus.push_back({9.0f, 0.0f, 0.0f, 9.0f, 1.0f, 0.0f, 9.0f, 0.0f, 1.0f});
    expectSameMeshes(torus);
    ASSERT_TRUE(merged.model);
    EXPECT_EQ(99, merged.model->cm.vn);

    std::vector<StlTriangle> soup;
    for (const StlTriangle& triangle : torusTriangles(4, 4)) {
        StlTriangle apart = triangle;
        apart[0] += static_cast<float>(soup.size());
        soup.push_back(apart);
    }
    expectSameMeshes(soup);
}

TEST_F(ReadersTest, PlyAsciiKeepsVertexColorsAndFileNormals)
{
    const QByteArray ply = "ply\nformat ascii 1.0\ncomment a square\nelement vertex 4\n"
                           "property float x\nproperty float y\nproperty float z\n"
                           "property float nx\nproperty float ny\nproperty float nz\n"
                           "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                           "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                           "0 0 0 0 0 5 255 0 0\n1 0 0 0 0 5 0 255 0\n1 1 0 0 0 5 0 0 255\n0 1 0 0 0 5 10 20 30\n"
                           "4 0 1 2 3\n";
    Result result = load(write("square.ply", ply));
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    const CMeshO& cm = result.model->cm;
    ASSERT_EQ(4, cm.vn);
    EXPECT_EQ(2, cm.fn);
    EXPECT_EQ(Color4b::fromRgba(255, 0, 0, 255), cm.vert[0].color);
    EXPECT_EQ(Color4b::fromRgba(10, 20, 30, 255), cm.vert[3].color);
    // Normals of the file stay as they are; face normals are computed and normalised.
    EXPECT_EQ(scene::CVertexO::Point(0.0, 0.0, 5.0), cm.vert[2].normal);
    EXPECT_EQ(scene::CVertexO::Point(0.0, 0.0, 1.0), cm.face[0].normal);
}

// A 3 x 1 rectangle as one quad, or as two triangles (the second one coloured).
QByteArray binaryPly(bool bigEndian, bool triangles)
{
    QByteArray data = QByteArray("ply\nformat ") + (bigEndian ? "binary_big_endian" : "binary_little_endian")
                      + " 1.0\nelement vertex 4\nproperty double x\nproperty double y\nproperty double z\n"
                      + (triangles ? "element face 2\n" : "element face 1\n")
                      + "property list uchar uint vertex_indices\n"
                        "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n";
    const double points[4][3] = {{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {0, 1, 0}};
    for (const auto& point : points) {
        for (double value : point) {
            quint64 word;
            std::memcpy(&word, &value, 8);
            char bytes[8];
            bigEndian ? qToBigEndian<quint64>(word, bytes) : qToLittleEndian<quint64>(word, bytes);
            data.append(bytes, 8);
        }
    }
    auto appendFace = [&](std::initializer_list<quint32> indices, const char* color) {
        data.append(char(indices.size()));
        for (quint32 index : indices) {
            char bytes[4];
            bigEndian ? qToBigEndian<quint32>(index, bytes) : qToLittleEndian<quint32>(index, bytes);
            data.append(bytes, 4);
        }
        data.append(color, 3);
    };
    if (triangles) {
        appendFace({0u, 1u, 2u}, "\x01\x02\x03");
        appendFace({0u, 2u, 3u}, "\x07\x08\x09");
    } else {
        appendFace({0u, 1u, 2u, 3u}, "\x07\x08\x09");
    }
    return data;
}

// Triangles get mesh storage made while the body is read; a quad's is dropped.
TEST_F(ReadersTest, PlyBinaryInBothByteOrdersWithFaceColors)
{
    for (bool bigEndian : {false, true}) {
        for (bool triangles : {false, true}) {
            Result result = load(write("quad.ply", binaryPly(bigEndian, triangles)));
            ASSERT_TRUE(result.model) << qPrintable(result.error);
            const CMeshO& cm = result.model->cm;
            EXPECT_EQ(4, cm.vn);
            EXPECT_EQ(2, cm.fn);
            EXPECT_EQ(io::scene::Loader::Center(1.5f, 0.5f, 0.0f), result.center);
            ASSERT_TRUE(cm.face.isColorEnabled());
            EXPECT_EQ(triangles ? Color4b::fromRgba(1, 2, 3, 255) : Color4b::fromRgba(7, 8, 9, 255), cm.face.colors()[0]);
            EXPECT_EQ(Color4b::fromRgba(7, 8, 9, 255), cm.face.colors()[1]);
            for (const scene::CFaceO& face : cm.face)
                EXPECT_EQ(&cm.face, face.container);
        }
    }
}

TEST_F(ReadersTest, ObjWithRelativeIndicesPolygonsAndColors)
{
    const QByteArray obj = "# a quad and a triangle\nmtllib none.mtl\no thing\n"
                           "v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 1 1 0 0 0 1\nv 0 1 0 1 1 1\nvn 0 0 1\nvt 0 0\n"
                           "f 1/1/1 2/1/1 3/1/1 4/1/1\ng tip\nv 0.5 0.5 1 0.5 0.5 0.5\nf -1 -4 -3\n";
    Result result = load(write("thing.obj", obj));
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    const CMeshO& cm = result.model->cm;
    EXPECT_EQ(5, cm.vn);
    EXPECT_EQ(3, cm.fn);
    EXPECT_EQ(Color4b::fromRgba(0, 255, 0, 255), cm.vert[1].color);
    EXPECT_EQ(Color4b::fromRgba(128, 128, 128, 255), cm.vert[4].color);
}

TEST_F(ReadersTest, OffVariantsWithCommentsAndColors)
{
    const QByteArray off = "COFF\n# colours per vertex\n4 2 0\n0 0 0 255 0 0 255\n1 0 0 0 255 0 255\n"
                           "1 1 0 0 0 1.0 1.0\n0 1 0 1 1 1 1\n3 0 1 2\n3 0 2 3 # last face\n";
    Result result = load(write("square.off", off));
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    EXPECT_EQ(4, result.model->cm.vn);
    EXPECT_EQ(2, result.model->cm.fn);
    EXPECT_EQ(Color4b::fromRgba(0, 0, 255, 255), result.model->cm.vert[2].color);

    // Keyword and counts on one line, a pentagon split into a fan.
    Result fan = load(write("fan.off", "OFF 5 1 0\n0 0 0\n1 0 0\n2 1 0\n1 2 0\n0 1 0\n5 0 1 2 3 4\n"));
    ASSERT_TRUE(fan.model) << qPrintable(fan.error);
    EXPECT_EQ(3, fan.model->cm.fn);
}

TEST_F(ReadersTest, FormatsWithoutOwnReaderGoThroughAssimp)
{
    // assimp's raw format: one triangle of nine numbers per line; a closed tetrahedron.
    const QByteArray raw = "0 0 0  0 1 0  1 0 0\n0 0 0  0 0 1  0 1 0\n0 0 0  1 0 0  0 0 1\n1 0 0  0 1 0  0 0 1\n";
    Result result = load(write("tetra.raw", raw));
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    EXPECT_EQ(4, result.model->cm.vn);
    EXPECT_EQ(4, result.model->cm.fn);
}

TEST_F(ReadersTest, TheBundledSampleIsAClosedColouredMesh)
{
    Result result = load(QStringLiteral(QEL_SOURCE_DIR "/samples/sample.ply"));
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    const CMeshO& cm = result.model->cm;
    EXPECT_EQ(3840, cm.vn);
    EXPECT_EQ(7680, cm.fn);
    for (std::size_t face = 0; face < cm.face.size(); ++face) {
        for (int edge = 0; edge < 3; ++edge)
            ASSERT_NE(&cm.face[face], cm.face.faceFaceLinks()[face].face[edge]) << "border edge on face " << face;
    }
    EXPECT_NE(cm.vert[0].color, cm.vert[cm.vert.size() / 2].color);
    // Faces wind counter-clockwise seen from outside: the outermost point's normal points out.
    const auto outermost = std::max_element(cm.vert.begin(), cm.vert.end(),
                                            [](const auto& a, const auto& b) { return a.coord.x() < b.coord.x(); });
    EXPECT_GT(outermost->normal.x(), 0.9);
}

TEST_F(ReadersTest, MissingAndEmptyFilesAreRefused)
{
    LogCapture log;
    const QString missing = folder.filePath("missing.stl");
    Result result = load(missing);
    EXPECT_FALSE(result.model);
    EXPECT_EQ(QStringLiteral("Could not load '%1': the file does not exist").arg(missing), result.error);
    EXPECT_EQ(1, log.count(result.error, 1000));

    for (const char* name : {"empty.stl", "empty.ply", "empty.obj", "empty.off"})
        EXPECT_TRUE(refused(name, QByteArray()).endsWith("the file is empty")) << name;
}

TEST_F(ReadersTest, TruncatedBinaryFilesAreRefused)
{
    QByteArray stl = binaryStl(boxTriangles(0, 0, 0, 1, 1, 1));
    stl.chop(60);
    EXPECT_TRUE(refused("cut.stl", stl).contains("truncated: its header announces 12 triangles"));
    EXPECT_TRUE(refused("header.stl", QByteArray(40, 'x')).contains("truncated"));

    QByteArray ply = binaryPly(false, false);
    ply.chop(10);
    EXPECT_TRUE(refused("cut.ply", ply).contains("truncated"));
    // The header itself cut off.
    EXPECT_TRUE(refused("head.ply", "ply\nformat ascii 1.0\nelement vertex 3\n").contains("before 'end_header'"));
}

TEST_F(ReadersTest, PlyHeadersThatLieAboutTheirCountsAreRefused)
{
    const QByteArray head = "ply\nformat ascii 1.0\nelement vertex %1\nproperty float x\nproperty float y\n"
                            "property float z\nelement face %2\nproperty list uchar int vertex_indices\nend_header\n";
    const QByteArray body = "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    auto ply = [&](const char* vertices, const char* faces) { return QString(head).arg(vertices).arg(faces).toLatin1() + body; };
    // More announced than there is: caught before reading, and while reading.
    EXPECT_TRUE(refused("more.ply", ply("1000", "1")).contains("truncated: the header announces 1000 vertex elements"));
    EXPECT_TRUE(refused("more2.ply", ply("3", "2")).contains("truncated: it ends in face 2 of 2"));
    // Fewer than there is: the rest of the data is left over or read as the wrong thing.
    EXPECT_TRUE(refused("fewer.ply", ply("3", "0")).contains("more data than its header announces"));
    EXPECT_FALSE(refused("fewer2.ply", ply("2", "1")).isEmpty());
    // A count far beyond anything a file holds.
    EXPECT_TRUE(refused("huge.ply", ply("4000000000", "1")).contains("more than can be loaded"));

    const QByteArray binaryHead = "ply\nformat binary_little_endian 1.0\nelement vertex 100000000\nproperty float x\n"
                                  "property float y\nproperty float z\nend_header\n";
    EXPECT_TRUE(refused("liar.ply", binaryHead + QByteArray(36, '\0')).contains("truncated"));
    EXPECT_TRUE(refused("off.off", "OFF\n4 1 0\n0 0 0\n1 0 0\n0 1 0\n").contains("truncated"));
}

TEST_F(ReadersTest, FacesWithIndicesOutOfRangeAreRefused)
{
    const QByteArray ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                           "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 3\n";
    EXPECT_TRUE(refused("range.ply", ply).contains("face 1 uses vertex index 3, but the file has 3 vertices"));
    EXPECT_TRUE(refused("negative.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 -4\n").contains("face 1 uses vertex index -4"));
    EXPECT_TRUE(refused("zero.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 0 1 2\n").contains("vertex index 0"));
    EXPECT_TRUE(refused("range.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n").contains("vertex index 7"));
}

TEST_F(ReadersTest, NotANumberCoordinatesAreRefused)
{
    std::vector<StlTriangle> box = boxTriangles(0, 0, 0, 1, 1, 1);
    box[5][4] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(refused("nan.stl", binaryStl(box)).contains("triangle 6 has a coordinate that is not a finite number"));
    EXPECT_TRUE(refused("nan_ascii.stl", asciiStl(box)).contains("not a finite number"));
    const QByteArray ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                           "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 nan 0\n0 1 0\n3 0 1 2\n";
    EXPECT_TRUE(refused("nan.ply", ply).contains("vertex 2 has a coordinate that is not a finite number"));
    EXPECT_TRUE(refused("nan.obj", "v 0 0 0\nv 1 0 0\nv 0 NaN 0\nf 1 2 3\n").contains("vertex 3 has a coordinate"));
    EXPECT_TRUE(refused("inf.off", "OFF\n3 1 0\n0 0 0\ninf 0 0\n0 1 0\n3 0 1 2\n").contains("not a finite number"));
}

TEST_F(ReadersTest, FilesWithoutFacesOrInAnotherFormatAreRefused)
{
    EXPECT_TRUE(refused("points.obj", "v 0 0 0\nv 1 0 0\n").endsWith("the file holds no faces"));
    EXPECT_TRUE(refused("noply.ply", "solid x\n").contains("not a PLY file"));
    EXPECT_TRUE(refused("words.stl", "solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 zero\n").contains("a number expected"));
    EXPECT_TRUE(refused("noend.stl", "solid x\n").contains("before 'endsolid'"));
}

TEST_F(ReadersTest, PlyHeaderLinesOfNoKnownKeywordAreSkippedWithAWarning)
{
    // Writers put free text into the header, without the "comment" keyword.
    const QByteArray ply = "ply\nformat ascii 1.0\nCreated by a modeller 2.47, source file: \nelement vertex 3\n"
                           "property float x\nproperty float y\nproperty float z\n"
                           "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                           "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    const QString path = write("free_text.ply", ply);
    LogCapture log;
    Result result = load(path);
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    EXPECT_EQ(1, result.model->cm.fn);
    EXPECT_EQ(1, log.count("While reading '" + path + "': header line 3: skipped, unknown keyword 'Created'", 2000));

    // A header of nothing but unknown lines keeps a few warnings and counts the rest.
    QByteArray noisy = "ply\nformat ascii 1.0\n";
    for (int line = 0; line < 100; ++line)
        noisy += "note " + QByteArray::number(line) + "\n";
    noisy += ply.mid(ply.indexOf("element vertex"));
    log.clear();
    const QString noisyPath = write("noisy.ply", noisy);
    result = load(noisyPath);
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    EXPECT_EQ(21, log.count("While reading '" + noisyPath + "'", 2000));
    EXPECT_EQ(1, log.count("80 more warnings", 2000));
}

TEST_F(ReadersTest, ObjNumbersWithStrayCharactersAndFacesWithoutSurfaceAreReadPast)
{
    const QByteArray obj = "v 0 0 0\nv 1 0 0\nv 0 3.1+e2 0\nf\nf 1 2\nf 1 2 3\n";
    const QString path = write("lenient.obj", obj);
    LogCapture log;
    Result result = load(path);
    ASSERT_TRUE(result.model) << qPrintable(result.error);
    EXPECT_EQ(1, result.model->cm.fn);
    EXPECT_DOUBLE_EQ(3.1 / 2, result.model->cm.bbox.max.y());
    EXPECT_EQ(1, log.count("While reading '" + path + "': line 3: '3.1+e2' read as 3.1", 2000));
    EXPECT_EQ(0, log.count("3.10000"));
    EXPECT_EQ(1, log.count("line 4: face 1 has 0 corners, fewer than a face needs: skipped", 2000));
    EXPECT_EQ(1, log.count("line 5: face 2 has 2 corners, fewer than a face needs: skipped", 2000));
    // Nothing but lines is no surface.
    EXPECT_TRUE(refused("lines.obj", "v 0 0 0\nv 1 0 0\nf 1 2\n").contains("no triangles"));
}

TEST_F(ReadersTest, PlyElementsWithoutPropertiesHoldNoData)
{
    // However many such elements the header announces, none takes a byte or a line.
    for (const char* format : {"ascii", "binary_little_endian"}) {
        QByteArray ply = QByteArray("ply\nformat ") + format + " 1.0\nelement nothing 2000000000\nelement vertex 3\n"
                         "property float x\nproperty float y\nproperty float z\n"
                         "element face 1\nproperty list uchar int vertex_indices\nend_header\n";
        if (QByteArray(format) == "ascii") {
            ply += "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
        } else {
            const float points[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
            ply.append(reinterpret_cast<const char*>(points), sizeof points);
            const qint32 corners[3] = {0, 1, 2};
            ply.append(char(3)).append(reinterpret_cast<const char*>(corners), sizeof corners);
        }
        Result result = load(write("empty_elements.ply", ply));
        ASSERT_TRUE(result.model) << format << ": " << qPrintable(result.error);
        EXPECT_EQ(1, result.model->cm.fn) << format;
    }
}

TEST_F(ReadersTest, PointCloudsAreRefusedAsSuch)
{
    const QByteArray ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                           "property float z\nend_header\n0 0 0\n1 0 0\n0 1 0\n";
    EXPECT_TRUE(refused("cloud.ply", ply).contains("no triangles, a point cloud of 3 vertices"));
}

TEST_F(ReadersTest, CheckFileLooksAtTheFirstBytesOnly)
{
    std::unique_ptr<io::scene::Loader> ply(io::scene::Importer::getInstance()->getLoader("a.ply"));
    ASSERT_TRUE(ply);
    EXPECT_TRUE(ply->checkFile(write("good.ply", "ply\nformat ascii 1.0\n")));
    EXPECT_FALSE(ply->checkFile(write("bad.ply", "OFF\n")));
    EXPECT_FALSE(ply->checkFile(folder.filePath("missing.ply")));
    EXPECT_FALSE(ply->checkFile(write("empty.ply", QByteArray())));
}

} // namespace
} // namespace test
} // namespace qel
