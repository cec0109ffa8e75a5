// libFuzzer target of the OBJ reader.
#include "fuzzcheck.h"
#include "plugins/io/readers/objparser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return qel::fuzz::fuzzRawMeshParser<qel::io::readers::ObjParser>(data, size);
}
