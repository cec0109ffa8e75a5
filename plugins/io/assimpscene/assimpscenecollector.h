#pragma once

#include <QString>
#include <cstddef>

struct aiFace;
struct aiMesh;
struct aiScene;

namespace qel {
namespace io {
namespace readers {
struct RawMesh;
}

namespace plugins {

// Gathers the triangles of a scene that assimp imported, triangulated and flattened into
// one RawMesh, and trusts nothing of it: importers of rarely used formats hand back null
// meshes, faces pointing past their vertices or polygons that survived triangulation, and
// reading such a scene blindly takes the whole application down. Points and lines are left
// out; a scene of nothing else is refused as such.
class AssimpSceneCollector
{
public:
    // False, with the reason in getError(), when the scene is broken or holds no triangle;
    // `mesh` is then in an unspecified state.
    bool collect(const aiScene& scene, readers::RawMesh& mesh);
    const QString& getError() const { return error; }

private:
    bool checkMesh(const aiMesh* part, unsigned int place);
    bool collectMesh(const aiMesh& part, unsigned int place, bool colored, readers::RawMesh& mesh);
    bool checkFace(const aiFace& face, unsigned int faceNumber, unsigned int place, unsigned int vertices);
    bool failWithoutTriangles();
    bool fail(const QString& reason);

    QString error;
    std::size_t points = 0;
    std::size_t lines = 0;
};

} // namespace plugins
} // namespace io
} // namespace qel
