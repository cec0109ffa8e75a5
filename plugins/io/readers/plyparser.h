#pragma once

#include "plugins/io/readers/meshparser.h"
#include "plugins/io/readers/plyheader.h"
#include "plugins/io/readers/rawmesh.h"

#include <cstddef>
#include <functional>

class QIODevice;

namespace qel {
namespace io {
namespace readers {

// Reads ASCII and binary PLY (either byte order): vertex positions, normals and colours,
// faces as index lists (polygons are split into fans) and face colours. Other elements and
// properties are read past. Every count of the header is checked against the data.
class PlyParser : public MeshParser
{
public:
    explicit PlyParser(ReadMonitor* monitor = nullptr);

    // Told, before the body of a binary file is read, the counts that its checked header
    // announces: vertices and face elements (0 without faces).
    typedef std::function<void(std::size_t vertices, std::size_t faces)> CountsListener;
    void setCountsListener(const CountsListener& listener) { countsListener = listener; }

    // Reads the device from its current position to its end into `mesh`, which is
    // cleared first and left in an unspecified state on failure.
    bool parse(QIODevice& device, RawMesh& mesh);
    const PlyHeader& getHeader() const { return header; }

    // Role of a property in the mesh; the parser reads past NONE.
    enum Role { NONE, X, Y, Z, NX, NY, NZ, RED, GREEN, BLUE, ALPHA, INDICES };

private:
    template <typename Values>
    bool readBody(Values& values, RawMesh& mesh);
    template <typename Values>
    bool readElement(Values& values, const PlyHeader::Element& element, RawMesh& mesh);
    bool checkSize(qint64 available, bool binary);
    bool addFace(const std::vector<double>& corners, const unsigned char* color, RawMesh& mesh);
    QString describeCounts() const;

    PlyHeader header;
    CountsListener countsListener;
    // The input of the running parse.
    ByteSource* source;
    long long vertexCount;
    long long faceNumber;
};

} // namespace readers
} // namespace io
} // namespace qel
