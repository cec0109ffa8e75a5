#pragma once

#include "plugins/io/readers/meshparser.h"

#include <cstddef>
#include <string_view>
#include <vector>

class QIODevice;

namespace qel {
namespace io {
namespace readers {

class ByteSource;
class TextScanner;

// Reads binary and ASCII STL. STL repeats every corner in every triangle, so the triangles
// go to a sink batch by batch instead of into one big array; the sink decides where they
// end up. Facet normals of the file are skipped: they are recomputed after loading.
class StlParser : public MeshParser
{
public:
    class TriangleSink
    {
    public:
        virtual ~TriangleSink();
        // The number of triangles to come when the format tells it beforehand.
        virtual void expect(std::size_t triangles);
        // Nine coordinates per triangle: corner 0, 1, 2, each x, y, z; all finite.
        virtual void add(const double* corners, std::size_t triangles) = 0;
    };

    static constexpr std::size_t BATCH_SIZE = 4096;

    explicit StlParser(ReadMonitor* monitor = nullptr);

    // Reads the device from its current position to its end.
    bool parse(QIODevice& device, TriangleSink& sink);
    bool isBinary() const { return binary; }
    std::size_t getTriangleCount() const { return triangles; }

    // Whether the first bytes of a file with this size look like ASCII STL.
    static bool looksLikeText(const char* head, std::size_t headLength, qint64 fileSize);

private:
    bool parseBinary(ByteSource& source, qint64 size, TriangleSink& sink);
    bool parseText(ByteSource& source, TriangleSink& sink);
    bool parseFacet(TextScanner& scanner, std::vector<double>& batch);
    bool expectKeyword(TextScanner& scanner, const char* keyword);
    bool readNumber(TextScanner& scanner, double& value);
    bool flush(std::vector<double>& batch, TriangleSink& sink, qint64 position);

    bool binary;
    std::size_t triangles;
};

} // namespace readers
} // namespace io
} // namespace qel
