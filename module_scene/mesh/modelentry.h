#pragma once

#include <QString>
#include <QtGlobal>
#include <cstdint>

class QIODevice;

namespace qel {
namespace scene {

class CMeshO;

// The binary form of a mesh in a project archive, a dump close to memory: a header with the
// vertex and face counts, packed vertex records, packed face records and, when the mesh has
// face colours, four bytes R, G, B, A per face. Everything is little-endian; integers are
// unsigned 32 bits, floating point values doubles.
class ModelEntry
{
public:
    static const qint64 HeaderSize = 8;
    static const qint64 VertexRecordSize = 52;
    static const qint64 FaceRecordSize = 40;
    static const qint64 ColorRecordSize = 4;

    struct Counts
    {
        std::uint32_t vertices = 0;
        std::uint32_t faces = 0;
    };

    // Writes the live vertices, renumbered from 0, and the faces whose corners are live (a
    // face with a deleted or foreign corner is logged and left out, its colour too). The
    // header is written again at the end with the counts that were written. Records are
    // gathered in large blocks. False on a write error, with the reason, or when abort was
    // set, with an empty reason.
    static bool write(const CMeshO& mesh, QIODevice* device, const bool& abort, QString& reason);

    // Reads the header of a device open for reading and checks that the device holds what
    // it announces: the records, and nothing behind them but a whole colour block.
    static bool readCounts(QIODevice* device, Counts& counts, bool& hasColors, QString& reason);
    // Reads the records behind the header into an empty mesh: the vectors are sized by the
    // counts, deleted entries are flagged and not counted in vn and fn, and the box is that of
    // the live vertices. Face colours are read into the colour array when it is enabled.
    // Topology is left to the caller. False with the reason when a face refers to a vertex
    // that isn't there, a coordinate isn't finite or the device fails; empty reason on abort.
    static bool readRecords(QIODevice* device, const Counts& counts, CMeshO& mesh, const bool& abort,
                            QString& reason);

private:
    ModelEntry() = delete;
};

} // namespace scene
} // namespace qel
