// The checks on what assimp hands back, fed with the broken scenes that importers of rarely
// used formats produce: each is refused with its reason instead of being read blindly.
#ifdef QEL_HAVE_ASSIMP_SCENE
#include "plugins/io/assimpscene/assimpscenecollector.h"
#include "plugins/io/readers/rawmesh.h"

#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>

namespace qel {
namespace test {
namespace {

using io::plugins::AssimpSceneCollector;

// A mesh of the given points and faces (each a list of corner indices); the scene owns it.
aiMesh* makeMesh(std::initializer_list<aiVector3D> points, std::initializer_list<std::initializer_list<unsigned int>> faces)
{
    auto* mesh = new aiMesh;
    mesh->mNumVertices = static_cast<unsigned int>(points.size());
    mesh->mVertices = new aiVector3D[points.size()];
    std::copy(points.begin(), points.end(), mesh->mVertices);
    mesh->mNumFaces = static_cast<unsigned int>(faces.size());
    mesh->mFaces = new aiFace[faces.size()];
    unsigned int place = 0;
    for (const auto& corners : faces) {
        aiFace& face = mesh->mFaces[place++];
        face.mNumIndices = static_cast<unsigned int>(corners.size());
        face.mIndices = new unsigned int[corners.size()];
        std::copy(corners.begin(), corners.end(), face.mIndices);
    }
    return mesh;
}

aiMesh* triangle(float shift = 0.0f)
{
    return makeMesh({{shift, 0, 0}, {shift + 1, 0, 0}, {shift, 1, 0}}, {{0, 1, 2}});
}

void setMeshes(aiScene& scene, std::initializer_list<aiMesh*> meshes)
{
    scene.mNumMeshes = static_cast<unsigned int>(meshes.size());
    scene.mMeshes = new aiMesh*[meshes.size()];
    std::copy(meshes.begin(), meshes.end(), scene.mMeshes);
}

QString refusal(aiScene& scene)
{
    AssimpSceneCollector collector;
    io::readers::RawMesh mesh;
    EXPECT_FALSE(collector.collect(scene, mesh));
    return collector.getError();
}

TEST(AssimpSceneCollector, MeshesAreJoinedAndPointsAndLinesLeftOut)
{
    aiScene scene;
    aiMesh* mixed = makeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}}, {{0, 1, 2}, {3}, {0, 3}});
    setMeshes(scene, {triangle(), mixed});
    AssimpSceneCollector collector;
    io::readers::RawMesh mesh;
    ASSERT_TRUE(collector.collect(scene, mesh)) << qPrintable(collector.getError());
    EXPECT_EQ(7u, mesh.vertexCount());
    ASSERT_EQ(2u, mesh.faceCount());
    // The second mesh's corners are numbered after the first mesh's vertices.
    EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 2, 3, 4, 5}), mesh.faces);
    // Colours only when every mesh has them.
    EXPECT_FALSE(mesh.hasColors());
}

TEST(AssimpSceneCollector, BrokenScenesAreRefusedWithTheirReason)
{
    {
        aiScene scene;
        setMeshes(scene, {triangle(), nullptr});
        EXPECT_EQ("mesh 2 of the scene is missing", refusal(scene));
    }
    {
        aiScene scene;
        scene.mNumMeshes = 3;
        EXPECT_EQ("the scene announces 3 meshes but has none", refusal(scene));
        scene.mNumMeshes = 0;
    }
    {
        aiScene scene;
        aiMesh* hollow = triangle();
        delete[] hollow->mVertices;
        hollow->mVertices = nullptr;
        setMeshes(scene, {hollow});
        EXPECT_EQ("mesh 1 announces 3 vertices but has none", refusal(scene));
    }
    {
        aiScene scene;
        aiMesh* faceless = triangle();
        delete[] faceless->mFaces;
        faceless->mFaces = nullptr;
        setMeshes(scene, {faceless});
        EXPECT_EQ("mesh 1 announces 1 faces but has none", refusal(scene));
    }
    {
        aiScene scene;
        setMeshes(scene, {makeMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2, 3}})});
        EXPECT_EQ("face 1 of mesh 1 has 4 corners after triangulation", refusal(scene));
    }
    {
        aiScene scene;
        setMeshes(scene, {makeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 3}})});
        EXPECT_EQ("face 1 of mesh 1 uses vertex index 3, but its mesh has 3 vertices", refusal(scene));
    }
    {
        aiScene scene;
        const float nan = std::numeric_limits<float>::quiet_NaN();
        setMeshes(scene, {makeMesh({{0, 0, 0}, {1, nan, 0}, {0, 1, 0}}, {{0, 1, 2}})});
        EXPECT_EQ("vertex 2 of mesh 1 has a coordinate that is not a finite number", refusal(scene));
    }
}

TEST(AssimpSceneCollector, ScenesWithoutTrianglesAreRefusedAsWhatTheyHold)
{
    {
        aiScene scene;
        setMeshes(scene, {makeMesh({{0, 0, 0}, {1, 0, 0}}, {{0}, {1}})});
        EXPECT_EQ("no triangles: a point cloud of 2 points", refusal(scene));
    }
    {
        aiScene scene;
        setMeshes(scene, {makeMesh({{0, 0, 0}, {1, 0, 0}}, {{0, 1}})});
        EXPECT_EQ("no triangles: only lines (1)", refusal(scene));
    }
    {
        aiScene scene;
        EXPECT_EQ("no triangles: the file holds no faces", refusal(scene));
    }
}

} // namespace
} // namespace test
} // namespace qel
#endif
