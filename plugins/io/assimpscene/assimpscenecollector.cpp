#include "plugins/io/assimpscene/assimpscenecollector.h"

#include "plugins/io/readers/rawmesh.h"

#include <assimp/scene.h>
#include <cmath>
#include <cstdint>
#include <limits>

namespace qel {
namespace io {
namespace plugins {

namespace {

// Mesh sizes are ints; the corners of all meshes are numbered together.
const std::size_t MAXIMUM_VERTICES = static_cast<std::size_t>(std::numeric_limits<int>::max());

std::uint8_t unitToByte(float value)
{
    const float scaled = std::round(value * 255.0f);
    if (!(scaled > 0.0f))
        return 0;
    return scaled >= 255.0f ? 255 : static_cast<std::uint8_t>(scaled);
}

bool isFinite(const aiVector3D& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

} // namespace

bool AssimpSceneCollector::collect(const aiScene& scene, readers::RawMesh& mesh)
{
    error.clear();
    points = 0;
    lines = 0;
    mesh = readers::RawMesh();
    if (scene.mNumMeshes > 0 && !scene.mMeshes)
        return fail(QStringLiteral("the scene announces %1 meshes but has none").arg(scene.mNumMeshes));
    for (unsigned int place = 0; place < scene.mNumMeshes; ++place) {
        if (!checkMesh(scene.mMeshes[place], place))
            return false;
    }
    // Colours are kept only when every mesh has them: a mesh can't be half coloured.
    bool colored = scene.mNumMeshes > 0;
    for (unsigned int place = 0; place < scene.mNumMeshes; ++place)
        colored = colored && scene.mMeshes[place]->HasVertexColors(0);
    for (unsigned int place = 0; place < scene.mNumMeshes; ++place) {
        if (!collectMesh(*scene.mMeshes[place], place, colored, mesh))
            return false;
    }
    if (mesh.faceCount() == 0)
        return failWithoutTriangles();
    return true;
}

bool AssimpSceneCollector::checkMesh(const aiMesh* part, unsigned int place)
{
    if (!part)
        return fail(QStringLiteral("mesh %1 of the scene is missing").arg(place + 1));
    if (part->mNumVertices > 0 && !part->mVertices)
        return fail(QStringLiteral("mesh %1 announces %2 vertices but has none").arg(place + 1).arg(part->mNumVertices));
    if (part->mNumFaces > 0 && !part->mFaces)
        return fail(QStringLiteral("mesh %1 announces %2 faces but has none").arg(place + 1).arg(part->mNumFaces));
    return true;
}

bool AssimpSceneCollector::collectMesh(const aiMesh& part, unsigned int place, bool colored, readers::RawMesh& mesh)
{
    const std::size_t first = mesh.vertexCount();
    if (part.mNumVertices > MAXIMUM_VERTICES - first)
        return fail(QStringLiteral("the scene has more than %1 vertices, more than can be loaded").arg(MAXIMUM_VERTICES));
    for (unsigned int v = 0; v < part.mNumVertices; ++v) {
        const aiVector3D& point = part.mVertices[v];
        if (!isFinite(point))
            return fail(QStringLiteral("vertex %1 of mesh %2 has a coordinate that is not a finite number")
                            .arg(v + 1)
                            .arg(place + 1));
        mesh.positions.insert(mesh.positions.end(), {point.x, point.y, point.z});
        if (colored) {
            const aiColor4D& color = part.mColors[0][v];
            mesh.colors.insert(mesh.colors.end(),
                               {unitToByte(color.r), unitToByte(color.g), unitToByte(color.b), unitToByte(color.a)});
        }
    }
    for (unsigned int f = 0; f < part.mNumFaces; ++f) {
        const aiFace& face = part.mFaces[f];
        if (!checkFace(face, f, place, part.mNumVertices))
            return false;
        if (face.mNumIndices == 1) {
            ++points;
        } else if (face.mNumIndices == 2) {
            ++lines;
        } else {
            for (unsigned int corner = 0; corner < 3; ++corner)
                mesh.faces.push_back(static_cast<std::uint32_t>(first + face.mIndices[corner]));
        }
    }
    return true;
}

bool AssimpSceneCollector::checkFace(const aiFace& face, unsigned int faceNumber, unsigned int place,
                                     unsigned int vertices)
{
    // Triangulation leaves points, lines and triangles; anything else is a broken face.
    if (face.mNumIndices == 0 || face.mNumIndices > 3 || !face.mIndices)
        return fail(QStringLiteral("face %1 of mesh %2 has %3 corners after triangulation")
                        .arg(faceNumber + 1)
                        .arg(place + 1)
                        .arg(face.mIndices ? face.mNumIndices : 0));
    for (unsigned int corner = 0; corner < face.mNumIndices; ++corner) {
        if (face.mIndices[corner] >= vertices)
            return fail(QStringLiteral("face %1 of mesh %2 uses vertex index %3, but its mesh has %4 vertices")
                            .arg(faceNumber + 1)
                            .arg(place + 1)
                            .arg(face.mIndices[corner])
                            .arg(vertices));
    }
    return true;
}

bool AssimpSceneCollector::failWithoutTriangles()
{
    if (points > 0 && lines > 0)
        return fail(QStringLiteral("no triangles: only points (%1) and lines (%2)").arg(points).arg(lines));
    if (points > 0)
        return fail(QStringLiteral("no triangles: a point cloud of %1 points").arg(points));
    if (lines > 0)
        return fail(QStringLiteral("no triangles: only lines (%1)").arg(lines));
    return fail(QStringLiteral("no triangles: the file holds no faces"));
}

bool AssimpSceneCollector::fail(const QString& reason)
{
    error = reason;
    return false;
}

} // namespace plugins
} // namespace io
} // namespace qel
