// libFuzzer target of the STL reader, binary and ASCII.
#include "fuzzcheck.h"
#include "plugins/io/readers/stlparser.h"

#include <cmath>

namespace {

// Checks every batch as the reader hands it out.
class CheckingSink : public qel::io::readers::StlParser::TriangleSink
{
public:
    void add(const double* corners, std::size_t triangles) override
    {
        for (std::size_t i = 0; i < 9 * triangles; ++i)
            qel::fuzz::require(std::isfinite(corners[i]));
        received += triangles;
    }
    std::size_t received = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qel::fuzz::InputDevice input(data, size);
    qel::io::readers::StlParser parser;
    CheckingSink sink;
    if (parser.parse(input.device(), sink))
        qel::fuzz::require(sink.received == parser.getTriangleCount() && sink.received > 0);
    else
        qel::fuzz::require(!parser.getError().isEmpty());
    return 0;
}
