#include "meshfixtures.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/meshtransform.h"

#include <gtest/gtest.h>
#include <cmath>

using qel::scene::Box3d;
using qel::scene::CFaceO;
using qel::scene::CMeshO;
using qel::scene::CVertexO;
using qel::scene::MeshBounds;
using qel::scene::MeshNormals;
using qel::scene::MeshTransform;
using namespace qel::test;

namespace {

void expectNear(const Point& expected, const Point& actual)
{
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(expected[axis], actual[axis], 1e-12) << "axis " << axis;
}

// Vertex 0 is shared by a large face facing +z (raw normal length 4) and a small one facing
// +y (raw normal length 1).
void buildUnequalPair(CMeshO& mesh)
{
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(2.0, 0.0, 0.0), Point(0.0, 2.0, 0.0), Point(0.0, 0.0, 1.0),
               Point(1.0, 0.0, 0.0)},
              {{0, 1, 2}, {0, 3, 4}});
}

} // namespace

TEST(MeshNormals, VertexNormalsAreAreaWeightedAndEverythingEndsNormalised)
{
    CMeshO mesh;
    buildUnequalPair(mesh);
    MeshNormals::updateVertexAndFaceNormals(mesh);

    expectNear(Point(0.0, 0.0, 1.0), mesh.face[0].normal);
    expectNear(Point(0.0, 1.0, 0.0), mesh.face[1].normal);
    const double length = std::sqrt(17.0);
    expectNear(Point(0.0, 1.0 / length, 4.0 / length), mesh.vert[0].normal);
    expectNear(Point(0.0, 0.0, 1.0), mesh.vert[1].normal);
    expectNear(Point(0.0, 1.0, 0.0), mesh.vert[3].normal);

    CMeshO cube;
    buildCube(cube);
    MeshNormals::updateVertexAndFaceNormals(cube);
    // Corner 6 = (1,1,1) lies in two triangles of the top and of the x = 1 side, but in only
    // one of the y = 1 side: the sum of raw normals is (2, 1, 2).
    expectNear(Point(2.0 / 3.0, 1.0 / 3.0, 2.0 / 3.0), cube.vert[6].normal);
}

TEST(MeshNormals, ProtectedVerticesFlaggedFacesAndDeletedEntriesAreLeftOut)
{
    CMeshO mesh;
    buildUnequalPair(mesh);
    const Point kept(7.0, 0.0, 0.0);
    mesh.vert[1].normal = kept;
    mesh.vert[1].setFlag(CVertexO::NORMAL_PROTECTED);
    mesh.vert[2].normal = kept;
    mesh.vert[2].setFlag(CVertexO::NORMAL_PROTECTED_TOO);
    mesh.face[1].setFlag(CFaceO::NO_VERTEX_NORMAL);

    MeshNormals::updateVertexAndFaceNormals(mesh);

    EXPECT_EQ(kept, mesh.vert[1].normal);
    EXPECT_EQ(kept, mesh.vert[2].normal);
    // The flagged face adds nothing, but its own normal is still computed.
    expectNear(Point(0.0, 0.0, 1.0), mesh.vert[0].normal);
    EXPECT_EQ(Point(), mesh.vert[3].normal) << "only in the flagged face: zeroed, nothing added";
    expectNear(Point(0.0, 1.0, 0.0), mesh.face[1].normal);

    CMeshO withDeleted;
    buildSquare(withDeleted);
    withDeleted.face[1].setDeleted();
    withDeleted.face[1].normal = kept;
    withDeleted.vert[3].setDeleted();
    withDeleted.vert[3].normal = kept;
    MeshNormals::updateVertexAndFaceNormals(withDeleted);
    EXPECT_EQ(kept, withDeleted.face[1].normal);
    EXPECT_EQ(kept, withDeleted.vert[3].normal);
}

TEST(MeshNormals, FaceNormalsAloneKeepTheVertexNormalsOfTheFile)
{
    CMeshO mesh;
    buildUnequalPair(mesh);
    const Point fromFile(0.0, 0.0, 3.0);
    for (CVertexO& vertex : mesh.vert)
        vertex.normal = fromFile;
    // A degenerate face gets a zero normal, not NaN.
    mesh.face[1].v[2] = mesh.face[1].v[1];

    MeshNormals::updateFaceNormals(mesh);

    expectNear(Point(0.0, 0.0, 1.0), mesh.face[0].normal);
    EXPECT_EQ(Point(), mesh.face[1].normal);
    for (const CVertexO& vertex : mesh.vert)
        EXPECT_EQ(fromFile, vertex.normal);
}

TEST(MeshBounds, BoxOfLiveVerticesAndTheEmptyBoxConvention)
{
    CMeshO mesh;
    MeshBounds::update(mesh);
    EXPECT_TRUE(mesh.bbox.isEmpty());
    EXPECT_EQ(Point(1.0, 1.0, 1.0), mesh.bbox.min);
    EXPECT_EQ(Point(-1.0, -1.0, -1.0), mesh.bbox.max);
    EXPECT_EQ(Point(0.0, 0.0, 0.0), mesh.bbox.center());

    buildMesh(mesh, {Point(5.0, -1.0, 2.0), Point(100.0, 100.0, 100.0), Point(3.0, 4.0, -2.0)}, {});
    mesh.vert[1].setDeleted();
    MeshBounds::update(mesh);
    EXPECT_FALSE(mesh.bbox.isEmpty());
    EXPECT_EQ(Point(3.0, -1.0, -2.0), mesh.bbox.min);
    EXPECT_EQ(Point(5.0, 4.0, 2.0), mesh.bbox.max);
    EXPECT_EQ(Point(2.0, 5.0, 4.0), mesh.bbox.extent());
    EXPECT_EQ(Point(4.0, 1.5, 0.0), mesh.bbox.center());

    // One point: a box of size zero, which is not empty.
    Box3d single;
    single.add(Point(-3.0, -3.0, -3.0));
    EXPECT_FALSE(single.isEmpty());
    EXPECT_EQ(single.min, single.max);
}

TEST(MeshTransform, TranslationMovesLiveVerticesAndKeepsNormalsBitForBit)
{
    CMeshO mesh;
    buildSquare(mesh);
    MeshNormals::updateVertexAndFaceNormals(mesh);
    mesh.vert[2].normal = Point(0.1, 0.2, 0.3);
    mesh.vert[3].setDeleted();

    MeshTransform::apply(mesh, MeshTransform::Matrix::translation(-0.5, -0.5, 2.0));

    EXPECT_EQ(Point(-0.5, -0.5, 2.0), mesh.vert[0].coord);
    EXPECT_EQ(Point(0.5, 0.5, 2.0), mesh.vert[2].coord);
    EXPECT_EQ(Point(0.0, 1.0, 0.0), mesh.vert[3].coord) << "deleted vertices stay";
    EXPECT_EQ(Point(0.1, 0.2, 0.3), mesh.vert[2].normal);
    EXPECT_EQ(Point(0.0, 0.0, 1.0), mesh.face[0].normal);
}

TEST(MeshTransform, UniformScaleKeepsNormalLengthAndWDividesPoints)
{
    CMeshO mesh;
    buildSquare(mesh);
    MeshNormals::updateVertexAndFaceNormals(mesh);
    MeshTransform::apply(mesh, MeshTransform::Matrix::scaling(2.0));
    EXPECT_EQ(Point(2.0, 2.0, 0.0), mesh.vert[2].coord);
    expectNear(Point(0.0, 0.0, 1.0), mesh.vert[2].normal);
    expectNear(Point(0.0, 0.0, 1.0), mesh.face[1].normal);

    MeshTransform::Matrix projective = MeshTransform::Matrix::identity();
    projective(3, 3) = 4.0;
    MeshTransform::apply(mesh, projective);
    EXPECT_EQ(Point(0.5, 0.5, 0.0), mesh.vert[2].coord);

    // A w of 0 leaves the point undivided.
    MeshTransform::Matrix flat = MeshTransform::Matrix::identity();
    flat(3, 3) = 0.0;
    MeshTransform::apply(mesh, flat);
    EXPECT_EQ(Point(0.5, 0.5, 0.0), mesh.vert[2].coord);
}
