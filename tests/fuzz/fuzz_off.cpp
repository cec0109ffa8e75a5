// libFuzzer target of the OFF reader.
#include "fuzzcheck.h"
#include "plugins/io/readers/offparser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return qel::fuzz::fuzzRawMeshParser<qel::io::readers::OffParser>(data, size);
}
