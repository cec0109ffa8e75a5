#pragma once

#include "plugins/io/readers/meshparser.h"
#include "plugins/io/readers/rawmesh.h"

#include <string_view>
#include <vector>

class QIODevice;

namespace qel {
namespace io {
namespace readers {

class TextScanner;

// Reads OFF with its variants for normals and colours ([ST][C][N]OFF): vertices, faces as
// polygons split into fans, face colours given as three or four values. Counts in the
// header are checked against the data.
class OffParser : public MeshParser
{
public:
    explicit OffParser(ReadMonitor* monitor = nullptr);

    // Reads the device from its current position to its end into `mesh`, which is
    // cleared first and left in an unspecified state on failure.
    bool parse(QIODevice& device, RawMesh& mesh);

private:
    // The next line that holds anything but blanks and comments.
    bool nextDataLine(TextScanner& scanner);
    bool parseKeyword(std::string_view keyword);
    bool parseCounts(std::size_t first);
    bool parseVertex(std::size_t vertex, RawMesh& mesh);
    bool parseFace(std::size_t face, RawMesh& mesh);
    bool readColor(std::size_t first, std::uint8_t* color);
    bool failAtLine(const QString& reason);

    bool withNormals;
    bool withColors;
    long long vertexCount;
    long long faceCount;
    int lineNumber;
    std::vector<std::string_view> tokens;
    std::vector<std::uint32_t> corners;
};

} // namespace readers
} // namespace io
} // namespace qel
