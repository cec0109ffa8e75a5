#pragma once

// What every reader promises about a mesh it accepts; a broken promise stops the fuzzer.
#include "plugins/io/readers/rawmesh.h"
#include "plugins/io/readers/readmonitor.h"

#include <QBuffer>
#include <QByteArray>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace qel {
namespace fuzz {

inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

inline void checkMesh(const io::readers::RawMesh& mesh)
{
    require(mesh.positions.size() % 3 == 0);
    require(mesh.faces.size() % 3 == 0);
    const std::size_t vertices = mesh.vertexCount();
    require(mesh.normals.empty() || mesh.normals.size() == mesh.positions.size());
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices);
    require(mesh.faceColors.empty() || mesh.faceColors.size() == 4 * mesh.faceCount());
    for (double value : mesh.positions)
        require(std::isfinite(value));
    for (std::uint32_t index : mesh.faces)
        require(index < vertices);
}

// The input as a read-only device, without copying it.
class InputDevice
{
public:
    InputDevice(const std::uint8_t* data, std::size_t size)
        : bytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size))), buffer(&bytes)
    {
        buffer.open(QIODevice::ReadOnly);
    }
    QIODevice& device() { return buffer; }

private:
    QByteArray bytes;
    QBuffer buffer;
};

// One run of a reader that fills a RawMesh: an accepted mesh keeps the promises, a refused
// one comes with a reason.
template <class Parser>
int fuzzRawMeshParser(const std::uint8_t* data, std::size_t size)
{
    InputDevice input(data, size);
    io::readers::ReadMonitor monitor(static_cast<qint64>(size));
    Parser parser(&monitor);
    io::readers::RawMesh mesh;
    if (parser.parse(input.device(), mesh))
        checkMesh(mesh);
    else
        require(!parser.getError().isEmpty());
    return 0;
}

} // namespace fuzz
} // namespace qel
