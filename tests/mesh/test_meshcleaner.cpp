#include "meshfixtures.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshcleaner.h"
#include "module_scene/mesh/vertexuserbits.h"

#include <QThread>
#include <gtest/gtest.h>
#include <cmath>
#include <limits>

using qel::scene::CMeshO;
using qel::scene::CVertexO;
using qel::scene::MeshAllocator;
using qel::scene::MeshCleaner;
using qel::scene::VertexUserBits;
using namespace qel::test;

TEST(MeshCleaner, SoupOfACubeMergesToItsEightCornersWithFacesRemapped)
{
    CMeshO mesh;
    buildCubeSoup(mesh);
    ASSERT_EQ(36, mesh.vn);

    EXPECT_EQ(28, MeshCleaner::removeDuplicateVertices(mesh));
    EXPECT_EQ(8, mesh.vn);
    EXPECT_EQ(12, mesh.fn);
    EXPECT_EQ(36u, mesh.vert.size()) << "merging only flags; compaction shrinks";

    // Every live face now uses live vertices only, and the survivor of each corner is the
    // first vertex with its position in storage order.
    for (const auto& face : mesh.face) {
        for (int corner = 0; corner < 3; ++corner) {
            const CVertexO* vertex = face.v[corner];
            EXPECT_FALSE(vertex->isDeleted());
            for (const CVertexO& other : mesh.vert) {
                if (&other == vertex)
                    break;
                EXPECT_FALSE(other.coord == vertex->coord) << "an earlier vertex had the same position";
            }
        }
    }
    EXPECT_EQ(0, MeshCleaner::removeUnreferencedVertices(mesh));
    EXPECT_EQ(0, MeshCleaner::removeDuplicateVertices(mesh)) << "a second run finds nothing";
}

TEST(MeshCleaner, MergingCollapsesDegenerateFacesAndThenStrandsTheirVertices)
{
    CMeshO mesh;
    // Face 1 has corners 3 and 4 at the places of 1 and 2: merged, it becomes a copy of face 0,
    // which is no degenerate face. Face 2 has two corners (5 and 6) at one place.
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(1.0, 0.0, 0.0),
               Point(0.0, 1.0, 0.0), Point(5.0, 5.0, 5.0), Point(5.0, 5.0, 5.0), Point(7.0, 7.0, 7.0)},
              {{0, 1, 2}, {0, 3, 4}, {5, 6, 7}});

    EXPECT_EQ(3, MeshCleaner::removeDuplicateVertices(mesh));
    EXPECT_EQ(5, mesh.vn);
    EXPECT_EQ((Triangle{0, 1, 2}), corners(mesh, 1));
    EXPECT_FALSE(mesh.face[1].isDeleted());
    EXPECT_TRUE(mesh.face[2].isDeleted());
    EXPECT_EQ(2, mesh.fn);

    // Vertices 5 and 7 belonged to the collapsed face only.
    EXPECT_EQ(2, MeshCleaner::removeUnreferencedVertices(mesh));
    EXPECT_EQ(3, mesh.vn);
    EXPECT_TRUE(mesh.vert[5].isDeleted());
    EXPECT_TRUE(mesh.vert[7].isDeleted());
}

TEST(MeshCleaner, DegenerateFaceRemovalCanBeLeftOut)
{
    CMeshO mesh;
    buildMesh(mesh, {Point(0.0, 0.0, 0.0), Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0)}, {{0, 1, 2}});
    EXPECT_EQ(1, MeshCleaner::removeDuplicateVertices(mesh, false));
    EXPECT_EQ(1, mesh.fn);
    EXPECT_EQ(1, MeshCleaner::removeDegenerateFaces(mesh));
    EXPECT_EQ(0, mesh.fn);
    EXPECT_EQ(0, MeshCleaner::removeDegenerateFaces(mesh)) << "deleted faces are not counted again";
}

TEST(MeshCleaner, OnlyBitIdenticalLiveVerticesMerge)
{
    CMeshO mesh;
    const double one = 1.0;
    const double nextToOne = std::nextafter(one, 2.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    buildMesh(mesh,
              {Point(one, 0.0, 0.0), Point(nextToOne, 0.0, 0.0), Point(nan, 0.0, 0.0), Point(nan, 0.0, 0.0),
               Point(2.0, 2.0, 2.0), Point(2.0, 2.0, 2.0), Point(0.0, -0.0, 0.0), Point(0.0, 0.0, 0.0)},
              {});
    // A deleted vertex neither merges nor takes others.
    mesh.vert[4].setDeleted();
    --mesh.vn;

    EXPECT_EQ(1, MeshCleaner::removeDuplicateVertices(mesh)) << "only -0 and +0 compare equal";
    EXPECT_FALSE(mesh.vert[0].isDeleted());
    EXPECT_FALSE(mesh.vert[1].isDeleted());
    EXPECT_FALSE(mesh.vert[2].isDeleted());
    EXPECT_FALSE(mesh.vert[3].isDeleted()) << "NaN equals nothing";
    EXPECT_FALSE(mesh.vert[5].isDeleted());
    EXPECT_FALSE(mesh.vert[6].isDeleted());
    EXPECT_TRUE(mesh.vert[7].isDeleted());
}

TEST(MeshCleaner, EmptyMeshesAndMeshesWithoutFaces)
{
    CMeshO empty;
    EXPECT_EQ(0, MeshCleaner::removeDuplicateVertices(empty));
    EXPECT_EQ(0, MeshCleaner::removeUnreferencedVertices(empty));

    CMeshO pointsOnly;
    buildMesh(pointsOnly, {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(1.0, 0.0, 0.0)}, {});
    EXPECT_EQ(1, MeshCleaner::removeDuplicateVertices(pointsOnly));
    EXPECT_EQ(2, MeshCleaner::removeUnreferencedVertices(pointsOnly));
    EXPECT_EQ(0, pointsOnly.vn);
    MeshAllocator::compactVertices(pointsOnly);
    EXPECT_TRUE(pointsOnly.vert.empty());
}

TEST(VertexUserBits, EachThreadCountsOnItsOwnFrom1024)
{
    const std::uint32_t before = VertexUserBits::lastBit();
    const std::uint32_t first = VertexUserBits::newBit();
    const std::uint32_t second = VertexUserBits::newBit();
    EXPECT_EQ(first * 2, second);
    EXPECT_FALSE(VertexUserBits::deleteBit(first)) << "only the last bit can be given back";
    EXPECT_EQ(second, VertexUserBits::lastBit());

    std::uint32_t otherThreadsFirst = 0;
    QThread* other = QThread::create([&otherThreadsFirst]() { otherThreadsFirst = VertexUserBits::newBit(); });
    other->start();
    other->wait();
    delete other;
    EXPECT_EQ(1024u, otherThreadsFirst);

    EXPECT_TRUE(VertexUserBits::deleteBit(second));
    EXPECT_TRUE(VertexUserBits::deleteBit(first));
    EXPECT_EQ(before, VertexUserBits::lastBit());
}

TEST(MeshCleaner, UnreferencedVertexRemovalGivesItsBitBack)
{
    const std::uint32_t before = VertexUserBits::lastBit();
    CMeshO mesh;
    buildSquare(mesh);
    EXPECT_EQ(0, MeshCleaner::removeUnreferencedVertices(mesh));
    EXPECT_EQ(before, VertexUserBits::lastBit());
}
