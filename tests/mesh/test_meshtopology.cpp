#include "meshfixtures.h"
#include "module_scene/mesh/meshborderflags.h"
#include "module_scene/mesh/meshtopology.h"

#include <gtest/gtest.h>
#include <functional>

using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::CVertexO;
using qel::scene::FaceLinks;
using qel::scene::MeshBorderFlags;
using qel::scene::MeshTopology;
using namespace qel::test;

namespace {

const FaceLinks& faceFace(const CMeshO& mesh, std::size_t place)
{
    return mesh.face.faceFaceLinks()[place];
}

std::vector<std::uint32_t> faceFlags(const CMeshO& mesh)
{
    std::vector<std::uint32_t> flags;
    for (const CFaceO& face : mesh.face)
        flags.push_back(face.flags);
    return flags;
}

std::vector<bool> vertexBorders(const CMeshO& mesh)
{
    std::vector<bool> borders;
    for (const CVertexO& vertex : mesh.vert)
        borders.push_back(vertex.isBorder());
    return borders;
}

int borderEdgeCount(const CMeshO& mesh)
{
    int count = 0;
    for (const CFaceO& face : mesh.face) {
        for (int edge = 0; edge < 3; ++edge)
            count += face.isBorder(edge) ? 1 : 0;
    }
    return count;
}

// Border flags by the edge list, then by face-face links on a fresh copy: both must agree.
void expectBothWaysAgree(const std::function<void(CMeshO&)>& build, int borderEdges)
{
    CMeshO byEdges;
    build(byEdges);
    MeshBorderFlags::fromEdgeList(byEdges);
    CMeshO byLinks;
    build(byLinks);
    MeshTopology::buildFaceFace(byLinks);
    MeshBorderFlags::fromFaceFace(byLinks);
    EXPECT_EQ(faceFlags(byEdges), faceFlags(byLinks));
    EXPECT_EQ(vertexBorders(byEdges), vertexBorders(byLinks));
    EXPECT_EQ(borderEdges, borderEdgeCount(byEdges));
}

} // namespace

TEST(MeshTopology, OpenStripLinksTwinsAndBordersToThemselves)
{
    CMeshO mesh;
    buildOpenStrip(mesh);
    EXPECT_FALSE(mesh.face.isFaceFaceEnabled());
    MeshTopology::buildFaceFace(mesh);
    ASSERT_TRUE(mesh.face.isFaceFaceEnabled());

    // Face 0 (0,2,1) edge 1 (2-1) is face 1 (1,2,3) edge 0 (1-2).
    EXPECT_EQ(&mesh.face[1], faceFace(mesh, 0).face[1]);
    EXPECT_EQ(0, faceFace(mesh, 0).index[1]);
    EXPECT_EQ(&mesh.face[0], faceFace(mesh, 1).face[0]);
    EXPECT_EQ(1, faceFace(mesh, 1).index[0]);
    // Face 1 edge 1 (2-3) is face 2 (2,4,3) edge 2 (3-2).
    EXPECT_EQ(&mesh.face[2], faceFace(mesh, 1).face[1]);
    EXPECT_EQ(2, faceFace(mesh, 1).index[1]);
    EXPECT_EQ(&mesh.face[1], faceFace(mesh, 2).face[2]);
    EXPECT_EQ(1, faceFace(mesh, 2).index[2]);
    // Border edges point back at their own face and edge.
    EXPECT_EQ(&mesh.face[0], faceFace(mesh, 0).face[0]);
    EXPECT_EQ(0, faceFace(mesh, 0).index[0]);
    EXPECT_EQ(&mesh.face[2], faceFace(mesh, 2).face[1]);
    EXPECT_EQ(1, faceFace(mesh, 2).index[1]);

    MeshBorderFlags::fromFaceFace(mesh);
    EXPECT_EQ(CFaceO::BORDER_EDGE_0 | CFaceO::BORDER_EDGE_2, mesh.face[0].flags);
    EXPECT_EQ(CFaceO::BORDER_EDGE_2, mesh.face[1].flags);
    EXPECT_EQ(CFaceO::BORDER_EDGE_0 | CFaceO::BORDER_EDGE_1, mesh.face[2].flags);
}

TEST(MeshTopology, ClosedMeshesHaveATwinForEveryEdge)
{
    CMeshO tetrahedron;
    buildTetrahedron(tetrahedron);
    MeshTopology::buildFaceFace(tetrahedron);
    CMeshO cube;
    buildCube(cube);
    MeshTopology::buildFaceFace(cube);
    for (CMeshO* mesh : {&tetrahedron, &cube}) {
        for (std::size_t place = 0; place < mesh->face.size(); ++place) {
            for (int edge = 0; edge < 3; ++edge) {
                const CFaceO* twin = faceFace(*mesh, place).face[edge];
                const int twinEdge = faceFace(*mesh, place).index[edge];
                ASSERT_NE(&mesh->face[place], twin);
                // The twin runs along the same edge the other way, and links back.
                EXPECT_EQ(mesh->face[place].v[edge], twin->v[(twinEdge + 1) % 3]);
                EXPECT_EQ(mesh->face[place].v[(edge + 1) % 3], twin->v[twinEdge]);
                EXPECT_EQ(&mesh->face[place], twin->faceFaceLinks().face[twinEdge]);
            }
        }
    }
}

TEST(MeshTopology, BorderFlagsAreTheSameWithOrWithoutFaceFaceLinks)
{
    expectBothWaysAgree(buildOpenStrip, 5);
    expectBothWaysAgree(buildFan, 4);
    expectBothWaysAgree(buildTetrahedron, 0);
    expectBothWaysAgree(buildCube, 0);
    // A deleted face opens the tetrahedron: its three edges become borders of the others.
    expectBothWaysAgree(
        [](CMeshO& mesh) {
            buildTetrahedron(mesh);
            mesh.face[3].setDeleted();
            --mesh.fn;
        },
        3);
    // Three faces on one edge: not a border, and the links form a ring over the three.
    expectBothWaysAgree(
        [](CMeshO& mesh) {
            buildMesh(mesh,
                      {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(0.0, -1.0, 0.0),
                       Point(0.0, 0.0, 1.0)},
                      {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}});
        },
        6);
}

TEST(MeshTopology, VertexBorderFlagsMarkTheRimOnly)
{
    CMeshO fan;
    buildFan(fan);
    fan.vert[0].setFlag(CVertexO::BORDER);
    MeshBorderFlags::fromEdgeList(fan);
    EXPECT_EQ((std::vector<bool>{false, true, true, true, true}), vertexBorders(fan));

    CMeshO cube;
    buildCube(cube);
    MeshBorderFlags::fromEdgeList(cube);
    for (const CVertexO& vertex : cube.vert)
        EXPECT_FALSE(vertex.isBorder());
}

TEST(MeshTopology, NonManifoldEdgeLinksARingOfThreeFaces)
{
    CMeshO mesh;
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(0.0, -1.0, 0.0),
               Point(0.0, 0.0, 1.0)},
              {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}});
    MeshTopology::buildFaceFace(mesh);
    EXPECT_EQ(&mesh.face[1], faceFace(mesh, 0).face[0]);
    EXPECT_EQ(&mesh.face[2], faceFace(mesh, 1).face[0]);
    EXPECT_EQ(&mesh.face[0], faceFace(mesh, 2).face[0]);
}

TEST(MeshTopology, VertexFaceChainsPutTheLastFaceFirst)
{
    CMeshO mesh;
    buildFan(mesh);
    mesh.face[2].setDeleted();
    --mesh.fn;
    MeshTopology::buildVertexFace(mesh);
    ASSERT_TRUE(mesh.face.isVertexFaceEnabled());

    // The centre is corner 0 of faces 0, 1 and 3; face 2 is deleted and left out.
    const CVertexO& centre = mesh.vert[0];
    EXPECT_EQ(&mesh.face[3], centre.vfFace);
    EXPECT_EQ(0, centre.vfIndex);
    const FaceLinks& fromLast = mesh.face.vertexFaceLinks()[3];
    EXPECT_EQ(&mesh.face[1], fromLast.face[0]);
    EXPECT_EQ(0, fromLast.index[0]);
    EXPECT_EQ(&mesh.face[0], mesh.face.vertexFaceLinks()[1].face[0]);
    EXPECT_EQ(nullptr, mesh.face.vertexFaceLinks()[0].face[0]) << "the first face ends the chain";

    // Vertex 3 was only in faces 1 (corner 2) and 2 (deleted).
    EXPECT_EQ(&mesh.face[1], mesh.vert[3].vfFace);
    EXPECT_EQ(2, mesh.vert[3].vfIndex);
    EXPECT_EQ(nullptr, mesh.face.vertexFaceLinks()[1].face[2]);

    // A second build starts from cleared heads and gives the same chains.
    MeshTopology::buildVertexFace(mesh);
    EXPECT_EQ(&mesh.face[3], centre.vfFace);
    EXPECT_EQ(&mesh.face[1], mesh.face.vertexFaceLinks()[3].face[0]);
}

// Links built for parts of the vertices, in any order, are those built for all at once.
TEST(MeshTopology, FaceFaceLinksOfVertexRangesMakeTheWhole)
{
    CMeshO whole;
    buildCube(whole);
    whole.face[3].setDeleted();
    MeshTopology::buildFaceFace(whole);
    const std::size_t vertices = whole.vert.size();
    for (std::size_t split = 0; split <= vertices; ++split) {
        CMeshO parts;
        buildCube(parts);
        parts.face[3].setDeleted();
        parts.face.enableFaceFace();
        MeshTopology::buildFaceFace(parts, split, vertices);
        MeshTopology::buildFaceFace(parts, 0, split);
        for (std::size_t place = 0; place < whole.face.size(); ++place) {
            for (int edge = 0; edge < 3; ++edge) {
                const FaceLinks& expected = faceFace(whole, place);
                const FaceLinks& actual = faceFace(parts, place);
                const CFaceO* expectedFace = expected.face[edge];
                ASSERT_EQ(expectedFace ? expectedFace - whole.face.data() : -1,
                          actual.face[edge] ? actual.face[edge] - parts.face.data() : -1)
                    << "split " << split << " face " << place << " edge " << edge;
                ASSERT_EQ(expected.index[edge], actual.index[edge]);
            }
        }
    }
}
