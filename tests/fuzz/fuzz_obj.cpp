// libFuzzer target of the OBJ reader.
#include "fuzzcheck.h"
#include "plugins/io/readers/objparser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qel::fuzz::InputDevice input(data, size);
    qel::io::readers::ReadMonitor monitor(static_cast<qint64>(size));
    qel::io::readers::ObjParser parser(&monitor);
    qel::io::readers::RawMesh mesh;
    if (parser.parse(input.device(), mesh))
        qel::fuzz::checkMesh(mesh);
    else
        qel::fuzz::require(!parser.getError().isEmpty());
    return 0;
}
