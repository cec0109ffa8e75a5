// loadmodel in the qel executable as users script it: one file of each common format, the
// cleaning pipeline's messages with their counts at --log-level 4000, the models in the
// scene dump, and bad files that are refused with a message naming file and reason while
// the script goes on with its next line.
#include "app/hostprocess.h"

#include <QDataStream>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace {

struct ScriptRun
{
    int exitCode = -1;
    QString err;
    QJsonObject scene;
};

class LoadModelEndToEnd : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    QString write(const QString& name, const QByteArray& contents)
    {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return file.fileName();
    }

    ScriptRun run(const QStringList& lines)
    {
        const QString script = qel::test::writeScript(dir.filePath("script.qel"), lines);
        const QString dump = dir.filePath("scene.json");
        QFile::remove(dump);
        const qel::test::HostRun host = qel::test::runHost(
            {"--offscreen", "--run", script, "--dump-scene", dump, "--log-level", "4000"});
        ScriptRun result;
        result.exitCode = host.exitCode;
        result.err = host.err;
        QFile file(dump);
        if (file.open(QIODevice::ReadOnly))
            result.scene = QJsonDocument::fromJson(file.readAll()).object();
        return result;
    }

    QTemporaryDir dir;
};

// The twelve outward triangles of the box (0,0,0)-(x,y,z), each with corners of its own.
QByteArray binaryStlBox(float x, float y, float z, int keptTriangles = 12)
{
    const float p[8][3] = {{0, 0, 0}, {x, 0, 0}, {x, y, 0}, {0, y, 0}, {0, 0, z}, {x, 0, z}, {x, y, z}, {0, y, z}};
    const int faces[12][3] = {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
                              {1, 2, 6}, {1, 6, 5}, {2, 3, 7}, {2, 7, 6}, {3, 0, 4}, {3, 4, 7}};
    QByteArray data(80, ' ');
    QDataStream stream(&data, QIODevice::Append);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    stream << quint32(12);
    for (int face = 0; face < keptTriangles; ++face) {
        stream << 0.0f << 0.0f << 0.0f;
        for (int corner : faces[face])
            stream << p[corner][0] << p[corner][1] << p[corner][2];
        stream << quint16(0);
    }
    return data;
}

QJsonArray models(const ScriptRun& run)
{
    QJsonArray found;
    for (const QJsonValue& element : run.scene["elements"].toArray()) {
        if (element.toObject()["type"].toString() == "SceneVCGModel")
            found.append(element);
    }
    return found;
}

QJsonObject modelNamed(const ScriptRun& run, const QString& name)
{
    for (const QJsonValue& model : models(run)) {
        if (model.toObject()["name"].toString() == name)
            return model.toObject();
    }
    ADD_FAILURE() << "no model " << name.toStdString();
    return QJsonObject();
}

std::vector<double> translationOf(const QJsonObject& model)
{
    const QJsonArray transform = model["transform"].toArray();
    return {transform[12].toDouble(), transform[13].toDouble(), transform[14].toDouble()};
}

} // namespace

TEST_F(LoadModelEndToEnd, LoadsStlPlyObjAndOffWithThePipelinesCounts)
{
    const QString stl = write("box.stl", binaryStlBox(2, 4, 6));
    // A tetrahedron and a vertex no face uses.
    const QString ply = write("tetra.ply", "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\n"
                                           "property float y\nproperty float z\nelement face 4\n"
                                           "property list uchar int vertex_indices\nend_header\n"
                                           "0 0 0\n1 0 0\n0 1 0\n0 0 1\n9 9 9\n3 0 2 1\n3 0 1 3\n3 0 3 2\n3 1 2 3\n");
    // A square whose second triangle repeats a corner of the first as a vertex of its own.
    const QString obj = write("square.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 1 1 0\nf 1 2 3\nf 1 5 4\n");
    // A pyramid over a quad, with a sliver face whose corners repeat a vertex.
    const QString off = write("pyramid.off", "OFF\n5 6 0\n0 0 0\n2 0 0\n2 2 0\n0 2 0\n1 1 3\n4 0 3 2 1\n"
                                             "3 0 1 4\n3 1 2 4\n3 2 3 4\n3 3 0 4\n3 0 0 4\n");
    const ScriptRun result = run({"loadmodel(" + stl + ",Box)", "loadmodel(" + ply + ",0,inplace)",
                               "loadmodel(" + obj + ",1,inplace)", "loadmodel(" + off + ",Pyramid)"});
    ASSERT_EQ(0, result.exitCode) << result.err.toStdString();

    const QString pipeline = "qel::io::scene::Loader::processMesh: ";
    const QStringList expected = {
        // box.stl: 12 triangles with 36 corners of their own, 28 of them repeated.
        pipeline + "# Vertices: 36, # Faces: 12, # Triangles: 12",
        pipeline + "Removed 28 duplicate and 0 unreferenced vertices", pipeline + "# Vertices after cleaning: 8/8",
        pipeline + "# Faces after cleaning: 12/12", pipeline + "Bounding Box (2 x 4 x 6)",
        pipeline + "Moving to center (1, 2, 3)",
        // tetra.ply
        pipeline + "# Vertices: 5, # Faces: 4, # Triangles: 4",
        pipeline + "Removed 0 duplicate and 1 unreferenced vertices", pipeline + "# Vertices after cleaning: 4/4",
        pipeline + "# Faces after cleaning: 4/4", pipeline + "Bounding Box (1 x 1 x 1)",
        // square.obj
        pipeline + "# Vertices: 5, # Faces: 2, # Triangles: 2",
        pipeline + "Removed 1 duplicate and 0 unreferenced vertices", pipeline + "Bounding Box (1 x 1 x 0)",
        pipeline + "Moving to center (0.5, 0.5, 0)",
        // pyramid.off: the quad becomes two triangles; the sliver goes.
        pipeline + "# Vertices: 5, # Faces: 7, # Triangles: 7", pipeline + "# Faces after cleaning: 6/6",
        pipeline + "Bounding Box (2 x 2 x 3)"};
    int from = 0;
    for (const QString& message : expected) {
        const int at = result.err.indexOf(message, from);
        EXPECT_GE(at, 0) << "missing in order: " << message.toStdString() << "\n" << result.err.toStdString();
        from = std::max(from, at);
    }

    ASSERT_EQ(4, models(result).size()) << result.err.toStdString();
    const double scale = result.scene["globalScalingFactor"].toDouble();
    EXPECT_DOUBLE_EQ(100.0 / std::sqrt(56.0), scale);
    EXPECT_EQ(std::vector<double>({0.0, 0.0, 0.0}), translationOf(modelNamed(result, "Box")));
    EXPECT_EQ(std::vector<double>({0.5 * scale, 0.5 * scale, 0.0}), translationOf(modelNamed(result, "square")));
    // Not in place: moved along z clear of what was there.
    for (const char* name : {"tetra", "Pyramid"}) {
        const std::vector<double> moved = translationOf(modelNamed(result, name));
        EXPECT_EQ(0.0, moved[0]);
        EXPECT_EQ(0.0, moved[1]);
        EXPECT_GT(moved[2], 0.0) << name;
    }
    EXPECT_EQ(scale, modelNamed(result, "Pyramid")["scalingFactor"].toDouble());
}

TEST_F(LoadModelEndToEnd, BadFilesAreRefusedWithTheirReasonAndTheScriptGoesOn)
{
    QByteArray cutPly = "ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty float x\n"
                        "property float y\nproperty float z\nelement face 1\n"
                        "property list uchar int vertex_indices\nend_header\n";
    // Three vertices, then a triangle that ends after its second corner.
    cutPly.append(QByteArray(3 * 12, '\0'));
    cutPly.append(char(3));
    cutPly.append(QByteArray(2 * 4, '\0'));
    struct Bad
    {
        QString path;
        QString reason;
    };
    std::vector<Bad> bad = {
        {dir.filePath("missing.stl"), "does not exist"},
        {write("empty.ply", QByteArray()), "empty"},
        {write("cut.stl", binaryStlBox(1, 1, 1, 11)), "truncated"},
        {write("cut.ply", cutPly), "truncated"},
        {write("liar.ply", "ply\nformat ascii 1.0\nelement vertex 1000\nproperty float x\nproperty float y\n"
                           "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                           "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"),
         "announces 1000"},
        {write("range.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n"), "vertex index 7"},
        {write("nan.obj", "v 0 0 0\nv 1 0 0\nv 0 NaN 0\nf 1 2 3\n"), "not a finite number"}};
    QStringList lines;
    for (const Bad& file : bad)
        lines << "loadmodel(" + file.path + ",x)";
    // No reader knows this type, by suffix or by content.
    const QString notes = write("notes.txt", "0 0 0");
    bad.push_back({notes, "no reader knows its type"});
    lines << "loadmodel(" + notes + ",x)";
    lines << "loadmodel(" + write("good.stl", binaryStlBox(1, 1, 1)) + ",Good)";

    const ScriptRun result = run(lines);
    ASSERT_EQ(0, result.exitCode) << result.err.toStdString();
    for (const Bad& file : bad) {
        const QString refusal = "Could not load '" + file.path + "': ";
        const int at = result.err.indexOf(refusal);
        ASSERT_GE(at, 0) << refusal.toStdString() << "\n" << result.err.toStdString();
        const QString line = result.err.mid(at, result.err.indexOf('\n', at) - at);
        EXPECT_TRUE(line.contains(file.reason)) << line.toStdString();
        // One line per refusal: the file and the reason together.
        EXPECT_EQ(1, result.err.count("'" + file.path + "'")) << result.err.toStdString();
    }
    EXPECT_FALSE(result.err.contains("could not be run")) << result.err.toStdString();

    // Only the good file made a model; the refused ones left no trace.
    const QJsonArray loaded = models(result);
    ASSERT_EQ(1, loaded.size()) << result.err.toStdString();
    EXPECT_EQ("Good", loaded[0].toObject()["name"].toString());
    EXPECT_DOUBLE_EQ(100.0 / std::sqrt(3.0), result.scene["globalScalingFactor"].toDouble());
}
