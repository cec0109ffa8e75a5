#pragma once

#include "plugins/io/readers/meshparser.h"
#include "plugins/io/readers/rawmesh.h"

#include <string_view>
#include <vector>

class QIODevice;

namespace qel {
namespace io {
namespace readers {

// Reads the geometry of Wavefront OBJ: vertices (with the common "v x y z r g b" colour
// extension) and faces, polygons split into fans, negative indices counted back from the
// last vertex. Normals, texture coordinates, groups and materials are read past.
class ObjParser : public MeshParser
{
public:
    explicit ObjParser(ReadMonitor* monitor = nullptr);

    // Reads the device from its current position to its end into `mesh`, which is
    // cleared first and left in an unspecified state on failure.
    bool parse(QIODevice& device, RawMesh& mesh);

private:
    bool parseVertex(const std::vector<std::string_view>& tokens, RawMesh& mesh);
    bool parseFace(const std::vector<std::string_view>& tokens, RawMesh& mesh);
    bool readNumber(std::string_view token, double& value);
    bool failAtLine(const QString& reason);
    void warnAtLine(const QString& warning);

    int lineNumber;
    std::size_t faceNumber;
    std::vector<std::uint32_t> corners;
};

} // namespace readers
} // namespace io
} // namespace qel
