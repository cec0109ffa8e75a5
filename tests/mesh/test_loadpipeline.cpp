// The cleaning pipeline every load ends in: its messages and counts, its progress values,
// abort, and the results on small meshes whose answers are known.
#include "support/logcapture.h"
#include "meshfixtures.h"
#include "module_scene/io/fastmeshcleaner.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshcleaner.h"
#include "module_scene/mesh/vertexuserbits.h"
#include "test_loadfiles.h"

#include <QThread>
#include <cmath>
#include <random>

namespace qel {
namespace test {
namespace {

using io::scene::Loader;
using scene::CMeshO;

// A loader whose "file" is a list of points and triangles given by the test.
class ArrayLoader : public Loader
{
public:
    ArrayLoader(std::vector<Point> points, std::vector<Triangle> triangles, int mask = 0)
        : points(std::move(points)), triangles(std::move(triangles)), mask(mask)
    {
    }

    bool checkFile(QString) override { return true; }
    std::vector<Point> normals;

protected:
    bool loadMeshFile() override
    {
        mesh = new scene::MeshModel;
        buildMesh(mesh->cm, points, triangles);
        for (std::size_t place = 0; place < normals.size(); ++place)
            mesh->cm.vert[place].normal = normals[place];
        processMesh(mask);
        return true;
    }

private:
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    int mask;
};

TEST(LoadPipeline, LogsEachStepWithItsCountsAndReportsProgressFrom80To100)
{
    // A box from (0,0,0) to (2,4,6) in STL fashion, one triangle of it with a corner moved
    // onto another (it degenerates when merged), and an unused point.
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    for (const StlTriangle& t : boxTriangles(0, 0, 0, 2, 4, 6)) {
        const int first = static_cast<int>(points.size());
        for (int corner = 0; corner < 3; ++corner)
            points.emplace_back(t[3 * corner], t[3 * corner + 1], t[3 * corner + 2]);
        triangles.push_back({first, first + 1, first + 2});
    }
    points.emplace_back(0.0, 0.0, 0.0);
    points.emplace_back(2.0, 0.0, 0.0);
    points.emplace_back(2.0, 0.0, 0.0);
    triangles.push_back({36, 37, 38});
    points.emplace_back(9.0, 9.0, 9.0);

    ArrayLoader loader(points, triangles);
    std::vector<std::pair<int, QString>> progress;
    QObject::connect(&loader, &Loader::progressChanged,
                     [&progress](int percent, const QString& text) { progress.emplace_back(percent, text); });
    LogCapture log;
    std::unique_ptr<scene::MeshModel> model(loader.loadMesh("array"));
    ASSERT_TRUE(model);

    const std::vector<QString> expected = {"# Vertices: 40, # Faces: 13, # Triangles: 13",
                                           "Removed 31 duplicate and 1 unreferenced vertices",
                                           "# Vertices after cleaning: 8/8",
                                           "# Faces after cleaning: 12/12",
                                           "Updating Normals",
                                           "Updating Bounding Box",
                                           "Bounding Box (2 x 4 x 6)",
                                           "Updating Topology",
                                           "Moving to center (1, 2, 3)",
                                           "Moving Bounding Box (1, 2, 3)"};
    EXPECT_EQ(expected, pipelineLines(log));
    const std::vector<std::pair<int, QString>> steps = {{80, "Cleaning Mesh"},
                                                        {83, "Removing deleted vertices"},
                                                        {84, "Removing deleted faces"},
                                                        {85, "Updating Normals"},
                                                        {90, "Updating Bounding Box"},
                                                        {93, "Updating Topology"},
                                                        {95, "Moving to center"},
                                                        {97, "Moving Bounding Box"},
                                                        {100, "Init. and uploading to graphics"}};
    EXPECT_EQ(steps, progress);

    const CMeshO& cm = model->cm;
    EXPECT_EQ(Loader::Center(1.0f, 2.0f, 3.0f), loader.getPreSetCenter());
    EXPECT_EQ(Point(-1.0, -2.0, -3.0), cm.bbox.min);
    EXPECT_EQ(Point(1.0, 2.0, 3.0), cm.bbox.max);
    // Centred, with area-weighted normals pointing out of the box at its corners.
    for (const scene::CVertexO& vertex : cm.vert) {
        EXPECT_EQ(1.0, std::abs(vertex.coord.x()));
        EXPECT_GT(vertex.normal.dot(vertex.coord), 0.0);
        EXPECT_NEAR(1.0, vertex.normal.length(), 1e-12);
    }
    // Topology is there: every edge of the closed box has a twin on another face.
    ASSERT_TRUE(cm.face.isFaceFaceEnabled());
    ASSERT_TRUE(cm.face.isVertexFaceEnabled());
    for (std::size_t face = 0; face < cm.face.size(); ++face) {
        for (int edge = 0; edge < 3; ++edge)
            EXPECT_NE(&cm.face[face], cm.face.faceFaceLinks()[face].face[edge]);
    }
    EXPECT_EQ(512u, scene::VertexUserBits::lastBit()) << "the user bit was not given back";
}

TEST(LoadPipeline, AMeshWithoutFacesLosesAllVerticesAndKeepsTheEmptyBox)
{
    ArrayLoader loader({Point(1.0, 2.0, 3.0), Point(4.0, 5.0, 6.0)}, {});
    LogCapture log;
    std::unique_ptr<scene::MeshModel> model(loader.loadMesh("points"));
    ASSERT_TRUE(model);
    EXPECT_EQ(0, model->cm.vn);
    EXPECT_TRUE(model->cm.bbox.isEmpty());
    EXPECT_EQ(Loader::Center(0.0f, 0.0f, 0.0f), loader.getPreSetCenter());
    EXPECT_TRUE(log.contains("Removed 0 duplicate and 2 unreferenced vertices", 4000));
    EXPECT_TRUE(log.contains("Bounding Box (-2 x -2 x -2)", 4000));
}

TEST(LoadPipeline, PointsThatDifferInTheLastBitStayApart)
{
    const double nearOne = std::nextafter(1.0, 2.0);
    ArrayLoader loader({Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(nearOne, 0.0, 0.0),
                        Point(-0.0, 1.0, 0.0)},
                       {{0, 1, 2}, {0, 3, 4}});
    std::unique_ptr<scene::MeshModel> model(loader.loadMesh("bits"));
    ASSERT_TRUE(model);
    // -0 equals 0: vertex 4 merges into 2, and 3 stays apart from 1.
    EXPECT_EQ(4, model->cm.vn);
    EXPECT_EQ(2, model->cm.fn);
}

TEST(LoadPipeline, NormalsOfTheFileAreKeptUnnormalised)
{
    ArrayLoader loader({Point(0.0, 0.0, 0.0), Point(2.0, 0.0, 0.0), Point(0.0, 2.0, 0.0)}, {{0, 1, 2}},
                       scene::MeshModel::VERTEX_NORMAL);
    loader.normals = {Point(0.0, 3.0, 0.0), Point(0.0, 0.0, 0.0), Point(1.0, 1.0, 1.0)};
    std::unique_ptr<scene::MeshModel> model(loader.loadMesh("normals"));
    ASSERT_TRUE(model);
    EXPECT_EQ(Point(0.0, 3.0, 0.0), model->cm.vert[0].normal);
    EXPECT_EQ(Point(1.0, 1.0, 1.0), model->cm.vert[2].normal);
    EXPECT_EQ(Point(0.0, 0.0, 1.0), model->cm.face[0].normal);
}

// The load's own cleaning steps must agree with those of the mesh layer, survivor for survivor.
TEST(LoadPipeline, FastCleaningAgreesWithTheMeshLayer)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> coordinate(0, 5);
    std::vector<Point> points;
    for (int i = 0; i < 3000; ++i)
        points.emplace_back(coordinate(random) * 0.5, coordinate(random) - 2.0, coordinate(random) == 0 ? -0.0 : 1.0);
    // Points used by no face.
    for (int i = 0; i < 50; ++i)
        points.emplace_back(100.0 + i, 0.0, 0.0);
    std::uniform_int_distribution<int> vertex(0, 2999);
    std::vector<Triangle> triangles;
    for (int i = 0; i < 2000; ++i)
        triangles.push_back({vertex(random), vertex(random), vertex(random)});

    CMeshO fast;
    CMeshO reference;
    for (CMeshO* mesh : {&fast, &reference}) {
        buildMesh(*mesh, points, triangles);
        mesh->vert[17].setDeleted();
        --mesh->vn;
        mesh->face[5].setDeleted();
        --mesh->fn;
    }
    io::scene::FastMeshCleaner cleaner(fast);
    EXPECT_EQ(scene::MeshCleaner::removeDuplicateVertices(reference), cleaner.removeDuplicateVertices());
    EXPECT_EQ(scene::MeshCleaner::removeUnreferencedVertices(reference), cleaner.removeUnreferencedVertices());
    ASSERT_EQ(reference.vn, fast.vn);
    ASSERT_EQ(reference.fn, fast.fn);
    for (std::size_t place = 0; place < points.size(); ++place)
        EXPECT_EQ(reference.vert[place].isDeleted(), fast.vert[place].isDeleted()) << place;

    scene::MeshAllocator::compactVertices(reference);
    cleaner.compactVertices();
    ASSERT_EQ(reference.vert.size(), fast.vert.size());
    EXPECT_EQ(fast.vert.size(), fast.vert.capacity());
    for (std::size_t place = 0; place < fast.vert.size(); ++place)
        EXPECT_EQ(reference.vert[place].coord, fast.vert[place].coord) << place;
    // A live face on the vertex deleted beforehand keeps a null corner in both.
    auto places = [](const CMeshO& mesh, std::size_t face) {
        Triangle result;
        for (int corner = 0; corner < 3; ++corner) {
            const scene::CVertexO* vertex = mesh.face[face].v[corner];
            result[corner] = vertex ? vertexPlace(mesh, vertex) : -1;
        }
        return result;
    };
    for (std::size_t face = 0; face < triangles.size(); ++face) {
        EXPECT_EQ(reference.face[face].isDeleted(), fast.face[face].isDeleted()) << face;
        if (!fast.face[face].isDeleted()) {
            EXPECT_EQ(places(reference, face), places(fast, face)) << face;
        }
    }
}

class LoadAbortTest : public LoadFixture
{
};

TEST_F(LoadAbortTest, AbortWhileReadingFailsWithoutAMeshAndAbortDuringCleaningIsIgnored)
{
    std::vector<StlTriangle> many;
    for (int i = 0; i < 4000; ++i) {
        for (const StlTriangle& t : boxTriangles(i, 0, 0, i + 1.0f, 1, 1))
            many.push_back(t);
    }
    const QString path = write("many.stl", binaryStl(many));

    // Reading reports below 80 and stops at the next poll once aborted.
    {
        std::unique_ptr<Loader> loader(io::scene::Importer::getInstance()->getLoader(path));
        std::vector<int> seen;
        QObject::connect(loader.get(), &Loader::progressChanged, [&](int percent, const QString&) {
            seen.push_back(percent);
            if (percent > 10)
                loader->abortLoading();
        });
        LogCapture log;
        std::unique_ptr<scene::MeshModel> model(loader->loadMesh(path));
        EXPECT_FALSE(model);
        EXPECT_EQ(QStringLiteral("Could not load '%1': loading was aborted").arg(path), loader->getErrorMessage());
        EXPECT_EQ(1, log.count(loader->getErrorMessage(), 2000));
        ASSERT_FALSE(seen.empty());
        EXPECT_LT(seen.back(), 80);
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    }
    // Once the cleaning runs, it runs to its end.
    {
        std::unique_ptr<Loader> loader(io::scene::Importer::getInstance()->getLoader(path));
        QObject::connect(loader.get(), &Loader::progressChanged, [&](int percent, const QString&) {
            if (percent == 80)
                loader->abortLoading();
        });
        std::unique_ptr<scene::MeshModel> model(loader->loadMesh(path));
        ASSERT_TRUE(model);
        EXPECT_TRUE(loader->isAborted());
        EXPECT_EQ(8 * 4000 - 4 * 3999, model->cm.vn);
    }
}

TEST_F(LoadAbortTest, LoadsOnSeveralThreadsAtOnceKeepTheirOwnUserBits)
{
    const QString small = write("small.stl", binaryStl(boxTriangles(0, 0, 0, 1, 1, 1)));
    std::vector<StlTriangle> row;
    for (int i = 0; i < 500; ++i) {
        for (const StlTriangle& t : boxTriangles(i, 0, 0, i + 1.0f, 1, 1))
            row.push_back(t);
    }
    const QString large = write("row.stl", binaryStl(row));
    // Meshes die on the application thread: the workers hand them back.
    std::unique_ptr<scene::MeshModel> models[4];
    std::vector<QThread*> threads;
    for (int i = 0; i < 4; ++i) {
        const QString path = i % 2 ? large : small;
        threads.push_back(QThread::create([path, i, &models]() {
            std::unique_ptr<Loader> loader(io::scene::Importer::getInstance()->getLoader(path));
            models[i].reset(loader->loadMesh(path));
        }));
        threads.back()->start();
    }
    int vertices[4];
    for (int i = 0; i < 4; ++i) {
        threads[i]->wait();
        delete threads[i];
        vertices[i] = models[i] ? models[i]->cm.vn : -1;
    }
    EXPECT_EQ(8, vertices[0]);
    EXPECT_EQ(8 * 500 - 4 * 499, vertices[1]);
    EXPECT_EQ(8, vertices[2]);
    EXPECT_EQ(8 * 500 - 4 * 499, vertices[3]);
}

} // namespace
} // namespace test
} // namespace qel
