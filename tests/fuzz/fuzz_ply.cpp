// libFuzzer target of the PLY reader.
#include "fuzzcheck.h"
#include "plugins/io/readers/plyparser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return qel::fuzz::fuzzRawMeshParser<qel::io::readers::PlyParser>(data, size);
}
