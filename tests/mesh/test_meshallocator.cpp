#include "meshfixtures.h"
#include "module_scene/mesh/meshallocator.h"
#include "module_scene/mesh/meshcleaner.h"
#include "module_scene/mesh/meshtopology.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <set>

using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::Color4b;
using qel::scene::CVertexO;
using qel::scene::FaceLinks;
using qel::scene::MeshAllocator;
using qel::scene::MeshCleaner;
using qel::scene::MeshTopology;
using namespace qel::test;

namespace {

bool faceHasVertex(const CFaceO& face, const CVertexO* vertex)
{
    return face.v[0] == vertex || face.v[1] == vertex || face.v[2] == vertex;
}

// Every face-face link of a live face leads to a face with the same edge (or is null), and
// every vertex-face chain visits exactly the live faces around its vertex.
void expectConsistentTopology(CMeshO& mesh)
{
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        const CFaceO& face = mesh.face[place];
        const FaceLinks& links = mesh.face.faceFaceLinks()[place];
        for (int edge = 0; edge < 3; ++edge) {
            const CFaceO* twin = links.face[edge];
            ASSERT_NE(nullptr, twin);
            ASSERT_TRUE(mesh.face.owns(twin));
            const int twinEdge = links.index[edge];
            EXPECT_TRUE(faceHasVertex(*twin, face.v[edge]) && faceHasVertex(*twin, face.v[(edge + 1) % 3]));
            EXPECT_TRUE(faceHasVertex(face, twin->v[twinEdge]) && faceHasVertex(face, twin->v[(twinEdge + 1) % 3]));
        }
    }
    for (CVertexO& vertex : mesh.vert) {
        std::set<const CFaceO*> chained;
        const CFaceO* face = vertex.vfFace;
        int corner = vertex.vfIndex;
        while (face) {
            EXPECT_EQ(&vertex, face->v[corner]);
            EXPECT_TRUE(chained.insert(face).second) << "chain loops";
            const FaceLinks& links = mesh.face.vertexFaceLinks()[face->index()];
            const CFaceO* next = links.face[corner];
            corner = links.index[corner];
            face = next;
        }
        std::set<const CFaceO*> expected;
        for (const CFaceO& candidate : mesh.face) {
            if (!candidate.isDeleted() && faceHasVertex(candidate, &vertex))
                expected.insert(&candidate);
        }
        EXPECT_EQ(expected, chained);
    }
}

} // namespace

TEST(MeshAllocator, FaceCompactionKeepsOptionalArraysAndLinksInStep)
{
    CMeshO mesh;
    buildCube(mesh);
    mesh.face.enableColor();
    mesh.face.enableMark();
    mesh.face.enableAuxVector();
    mesh.face.enableWedgeTexCoord();
    std::vector<Triangle> original;
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        original.push_back(corners(mesh, place));
        const unsigned char tag = static_cast<unsigned char>(place);
        mesh.face[place].color() = Color4b::fromRgba(tag, 0, 0, 255);
        mesh.face[place].mark() = static_cast<std::uint32_t>(place);
        mesh.face[place].auxVector() = Point(static_cast<double>(place), 0.0, 0.0);
        mesh.face[place].wedgeTexCoords().corner[2].u = static_cast<float>(place);
    }
    MeshTopology::buildFaceFace(mesh);
    const std::vector<std::size_t> removed = {1, 4, 5};
    for (std::size_t place : removed) {
        mesh.face[place].setDeleted();
        --mesh.fn;
    }
    MeshTopology::buildVertexFace(mesh);

    MeshAllocator::compactFaces(mesh);

    ASSERT_EQ(9u, mesh.face.size());
    EXPECT_EQ(9u, mesh.face.colors().size());
    EXPECT_EQ(9u, mesh.face.marks().size());
    EXPECT_EQ(9u, mesh.face.auxVectors().size());
    EXPECT_EQ(9u, mesh.face.wedgeTexCoords().size());
    EXPECT_EQ(9u, mesh.face.faceFaceLinks().size());
    EXPECT_EQ(9u, mesh.face.vertexFaceLinks().size());
    std::size_t newPlace = 0;
    for (std::size_t oldPlace = 0; oldPlace < original.size(); ++oldPlace) {
        if (std::find(removed.begin(), removed.end(), oldPlace) != removed.end())
            continue;
        const CFaceO& face = mesh.face[newPlace];
        EXPECT_EQ(original[oldPlace], corners(mesh, newPlace));
        EXPECT_EQ(oldPlace, face.color()[0]);
        EXPECT_EQ(oldPlace, mesh.face[newPlace].mark());
        EXPECT_EQ(static_cast<double>(oldPlace), mesh.face[newPlace].auxVector().x());
        EXPECT_EQ(static_cast<float>(oldPlace), mesh.face[newPlace].wedgeTexCoords().corner[2].u);
        EXPECT_EQ(newPlace, face.index());
        ++newPlace;
    }
    // Links to the removed faces became null; the others still lead to the right twin.
    int nullLinks = 0;
    for (const FaceLinks& links : mesh.face.faceFaceLinks()) {
        for (int edge = 0; edge < 3; ++edge) {
            if (!links.face[edge]) {
                ++nullLinks;
                EXPECT_EQ(-1, links.index[edge]);
            }
        }
    }
    EXPECT_EQ(7, nullLinks) << "edges once shared with faces 1, 4 and 5";

    MeshTopology::buildFaceFace(mesh);
    MeshTopology::buildVertexFace(mesh);
    // Rebuilt on the compacted mesh: borders now link to themselves.
    for (std::size_t place = 0; place < mesh.face.size(); ++place) {
        for (int edge = 0; edge < 3; ++edge)
            EXPECT_NE(nullptr, mesh.face.faceFaceLinks()[place].face[edge]);
    }
    expectConsistentTopology(mesh);
}

TEST(MeshAllocator, VertexChainsFollowFaceCompaction)
{
    CMeshO mesh;
    buildTetrahedron(mesh);
    MeshTopology::buildFaceFace(mesh);
    mesh.face[0].setDeleted();
    --mesh.fn;
    MeshTopology::buildVertexFace(mesh);
    MeshAllocator::compactFaces(mesh);
    ASSERT_EQ(3u, mesh.face.size());
    for (const CVertexO& vertex : mesh.vert) {
        ASSERT_NE(nullptr, vertex.vfFace);
        EXPECT_TRUE(mesh.face.owns(vertex.vfFace));
        EXPECT_EQ(&vertex, vertex.vfFace->v[vertex.vfIndex]);
    }
}

TEST(MeshAllocator, VertexCompactionKeepsOrderAndCarriesEveryField)
{
    CMeshO mesh;
    buildMesh(mesh,
              {Point(9.0, 9.0, 9.0), Point(0.0, 0.0, 0.0), Point(8.0, 8.0, 8.0), Point(1.0, 0.0, 0.0),
               Point(0.0, 1.0, 0.0), Point(7.0, 7.0, 7.0)},
              {{1, 3, 4}});
    for (std::size_t place = 0; place < mesh.vert.size(); ++place) {
        mesh.vert[place].spare = 100 + place;
        mesh.vert[place].mark = static_cast<std::uint32_t>(200 + place);
        mesh.vert[place].color = Color4b::fromRgba(static_cast<unsigned char>(place), 1, 2, 3);
    }
    EXPECT_EQ(3, MeshCleaner::removeUnreferencedVertices(mesh));

    MeshAllocator::compactVertices(mesh);

    ASSERT_EQ(3u, mesh.vert.size());
    EXPECT_EQ((Triangle{0, 1, 2}), corners(mesh, 0));
    const std::size_t survivors[] = {1, 3, 4};
    for (std::size_t place = 0; place < 3; ++place) {
        const CVertexO& vertex = mesh.vert[place];
        EXPECT_EQ(100 + survivors[place], vertex.spare);
        EXPECT_EQ(200 + survivors[place], vertex.mark);
        EXPECT_EQ(survivors[place], vertex.color[0]);
    }
    EXPECT_EQ(Point(1.0, 0.0, 0.0), mesh.face[0].v[1]->coord);

    // Nothing to do when vn equals the size.
    const CVertexO* before = mesh.vert.data();
    MeshAllocator::compactVertices(mesh);
    EXPECT_EQ(before, mesh.vert.data());
}

TEST(MeshAllocator, GrowingRebasesEveryPointerIntoTheMovedStorage)
{
    CMeshO mesh;
    buildTetrahedron(mesh);
    MeshTopology::buildFaceFace(mesh);
    MeshTopology::buildVertexFace(mesh);
    mesh.vert.shrink_to_fit();

    const std::size_t firstVertex = MeshAllocator::addVertices(mesh, 1000);
    EXPECT_EQ(4u, firstVertex);
    EXPECT_EQ(1004, mesh.vn);
    EXPECT_EQ(Point(0.0, 0.0, 1.0), mesh.face[3].v[2]->coord);
    EXPECT_EQ(Color4b::white(), mesh.vert[500].color) << "a new vertex is opaque white";
    EXPECT_EQ(nullptr, mesh.vert[500].vfFace);

    const std::size_t firstFace = MeshAllocator::addFaces(mesh, 1000);
    EXPECT_EQ(4u, firstFace);
    EXPECT_EQ(1004, mesh.fn);
    EXPECT_EQ(1004u, mesh.face.faceFaceLinks().size());
    EXPECT_EQ(&mesh.face, mesh.face[900].container);
    for (int place = 0; place < 4; ++place) {
        EXPECT_TRUE(mesh.face.owns(mesh.vert[place].vfFace));
        EXPECT_EQ(&mesh.vert[place], mesh.vert[place].vfFace->v[mesh.vert[place].vfIndex]);
        for (int edge = 0; edge < 3; ++edge)
            EXPECT_TRUE(mesh.face.owns(mesh.face.faceFaceLinks()[place].face[edge]));
    }
    EXPECT_EQ(nullptr, mesh.face.faceFaceLinks()[500].face[0]);
    EXPECT_EQ(-1, mesh.face.faceFaceLinks()[500].index[0]);
}

TEST(MeshAllocator, CopyPointsIntoTheCopyOnly)
{
    CMeshO source;
    buildCube(source);
    source.face.enableColor();
    source.face[3].color() = Color4b::fromRgba(1, 2, 3, 4);
    source.face[5].setDeleted();
    --source.fn;
    MeshTopology::buildFaceFace(source);
    MeshTopology::buildVertexFace(source);
    source.Tr(0, 3) = 5.0;

    CMeshO copy;
    MeshAllocator::copyMesh(copy, source);

    EXPECT_EQ(source.vn, copy.vn);
    EXPECT_EQ(source.fn, copy.fn);
    EXPECT_EQ(5.0, copy.Tr(0, 3));
    EXPECT_TRUE(copy.face[5].isDeleted());
    EXPECT_EQ(Color4b::fromRgba(1, 2, 3, 4), copy.face[3].color());
    for (std::size_t place = 0; place < copy.face.size(); ++place) {
        EXPECT_EQ(&copy.face, copy.face[place].container);
        EXPECT_EQ(corners(source, place), corners(copy, place));
        for (int edge = 0; edge < 3; ++edge) {
            const CFaceO* twin = copy.face.faceFaceLinks()[place].face[edge];
            if (!copy.face[place].isDeleted()) {
                EXPECT_TRUE(copy.face.owns(twin));
            }
        }
    }
    for (const CVertexO& vertex : copy.vert)
        EXPECT_TRUE(copy.face.owns(vertex.vfFace));
}

// A face vector made elsewhere (by a loader, on another thread) is swapped into a mesh: the
// faces keep their addresses, so links stay valid, and each side's faces know their vector.
TEST(FaceVector, SwapExchangesFacesArraysAndContainers)
{
    CMeshO mesh;
    buildFan(mesh);
    mesh.face.enableColor();
    mesh.face.colors()[1] = Color4b::fromRgba(1, 2, 3, 4);
    const CFaceO* firstFace = mesh.face.data();
    const std::size_t faces = mesh.face.size();

    qel::scene::FaceVector made;
    made.resize(5);
    made.enableFaceFace();
    made.faceFaceLinks()[4].face[0] = &made[2];
    mesh.face.swap(made);

    ASSERT_EQ(5u, mesh.face.size());
    EXPECT_TRUE(mesh.face.isFaceFaceEnabled());
    EXPECT_FALSE(mesh.face.isColorEnabled());
    EXPECT_EQ(&mesh.face[2], mesh.face.faceFaceLinks()[4].face[0]);
    for (const CFaceO& face : mesh.face)
        EXPECT_EQ(&mesh.face, face.container);

    ASSERT_EQ(faces, made.size());
    EXPECT_EQ(firstFace, made.data());
    EXPECT_TRUE(made.isColorEnabled());
    EXPECT_FALSE(made.isFaceFaceEnabled());
    EXPECT_EQ(Color4b::fromRgba(1, 2, 3, 4), made[1].color());
}
