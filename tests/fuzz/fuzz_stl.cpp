// libFuzzer target of the STL reader, binary and ASCII, with the merging of its corners.
#include "fuzzcheck.h"
#include "plugins/io/readers/cornermerger.h"
#include "plugins/io/readers/stlparser.h"

#include <cmath>

namespace {

// Checks every batch as the reader hands it out, then merges it.
class CheckingSink : public qel::io::readers::StlParser::TriangleSink
{
public:
    void expect(std::size_t triangles) override { merger.expect(triangles); }

    void add(const double* corners, std::size_t triangles) override
    {
        for (std::size_t i = 0; i < 9 * triangles; ++i)
            qel::fuzz::require(std::isfinite(corners[i]));
        received += triangles;
        merger.add(corners, triangles);
    }

    std::size_t received = 0;
    qel::io::readers::CornerMerger merger;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qel::fuzz::InputDevice input(data, size);
    qel::io::readers::StlParser parser;
    CheckingSink sink;
    if (!parser.parse(input.device(), sink)) {
        qel::fuzz::require(!parser.getError().isEmpty());
        return 0;
    }
    qel::fuzz::require(sink.received == parser.getTriangleCount() && sink.received > 0);
    qel::io::readers::RawMesh mesh;
    sink.merger.takeMesh(mesh);
    qel::fuzz::require(mesh.faceCount() == sink.received && mesh.vertexCount() <= 3 * sink.received);
    for (std::uint32_t place : mesh.faces)
        qel::fuzz::require(place < mesh.vertexCount());
    return 0;
}
