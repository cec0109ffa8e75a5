#include "plugins/io/readers/plyparser.h"

#include "plugins/io/readers/bytesource.h"
#include "plugins/io/readers/textscanner.h"

#include <QIODevice>
#include <QtEndian>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

namespace qel {
namespace io {
namespace readers {

namespace {

enum ReadResult { READ_OK, READ_ENDED, READ_INVALID };

const int ROLE_COUNT = PlyParser::INDICES + 1;

// Binary values, converted to double (exact for every PLY type).
class BinaryValues
{
public:
    BinaryValues(ByteSource& source, bool bigEndian) : source(source), bigEndian(bigEndian) {}

    ReadResult read(PlyHeader::Type type, double& value)
    {
        const std::size_t size = PlyHeader::sizeOf(type);
        if (!source.ensure(size))
            return READ_ENDED;
        value = decode(type, source.data());
        source.consume(size);
        return READ_OK;
    }

    qint64 position() const { return source.position(); }
    QString describe(const QString& what) const { return what; }

    // Anything but trailing whitespace behind the announced data is more than the header said.
    bool hasMoreData()
    {
        while (!source.atEnd()) {
            const char* bytes = source.data();
            for (std::size_t i = 0; i < source.available(); ++i) {
                if (!std::isspace(static_cast<unsigned char>(bytes[i])))
                    return true;
            }
            source.consume(source.available());
        }
        return false;
    }

private:
    template <typename T>
    T load(const char* bytes) const
    {
        return bigEndian ? qFromBigEndian<T>(bytes) : qFromLittleEndian<T>(bytes);
    }

    double decode(PlyHeader::Type type, const char* bytes) const
    {
        switch (type) {
        case PlyHeader::INT8:
            return static_cast<qint8>(bytes[0]);
        case PlyHeader::UINT8:
            return static_cast<quint8>(bytes[0]);
        case PlyHeader::INT16:
            return load<qint16>(bytes);
        case PlyHeader::UINT16:
            return load<quint16>(bytes);
        case PlyHeader::INT32:
            return load<qint32>(bytes);
        case PlyHeader::UINT32:
            return load<quint32>(bytes);
        case PlyHeader::FLOAT32: {
            const quint32 word = load<quint32>(bytes);
            float value;
            std::memcpy(&value, &word, sizeof value);
            return value;
        }
        case PlyHeader::FLOAT64: {
            const quint64 word = load<quint64>(bytes);
            double value;
            std::memcpy(&value, &word, sizeof value);
            return value;
        }
        }
        return 0.0;
    }

    ByteSource& source;
    bool bigEndian;
};

// ASCII values: whitespace-separated tokens, regardless of line breaks.
class TextValues
{
public:
    explicit TextValues(TextScanner& scanner) : scanner(scanner) {}

    ReadResult read(PlyHeader::Type, double& value)
    {
        if (!scanner.nextToken(token))
            return READ_ENDED;
        return TextScanner::toDouble(token, value) ? READ_OK : READ_INVALID;
    }

    qint64 position() const { return scanner.position(); }
    QString describe(const QString& what) const
    {
        return QStringLiteral("line %1: %2").arg(scanner.getLineNumber()).arg(what);
    }
    bool hasMoreData() { return scanner.nextToken(token); }

private:
    TextScanner& scanner;
    std::string_view token;
};

void assignRoles(const PlyHeader::Element& element, std::vector<PlyParser::Role>& roles)
{
    static const struct
    {
        const char* element;
        const char* property;
        PlyParser::Role role;
    } names[] = {{"vertex", "x", PlyParser::X},
                 {"vertex", "y", PlyParser::Y},
                 {"vertex", "z", PlyParser::Z},
                 {"vertex", "nx", PlyParser::NX},
                 {"vertex", "ny", PlyParser::NY},
                 {"vertex", "nz", PlyParser::NZ},
                 {"vertex", "red", PlyParser::RED},
                 {"vertex", "green", PlyParser::GREEN},
                 {"vertex", "blue", PlyParser::BLUE},
                 {"vertex", "alpha", PlyParser::ALPHA},
                 {"vertex", "diffuse_red", PlyParser::RED},
                 {"vertex", "diffuse_green", PlyParser::GREEN},
                 {"vertex", "diffuse_blue", PlyParser::BLUE},
                 {"face", "vertex_indices", PlyParser::INDICES},
                 {"face", "vertex_index", PlyParser::INDICES},
                 {"face", "red", PlyParser::RED},
                 {"face", "green", PlyParser::GREEN},
                 {"face", "blue", PlyParser::BLUE},
                 {"face", "alpha", PlyParser::ALPHA}};
    roles.assign(element.properties.size(), PlyParser::NONE);
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        const PlyHeader::Property& property = element.properties[i];
        for (const auto& name : names) {
            // Lists carry indices only; a scalar never does.
            if (element.name == name.element && property.name == name.property
                && property.isList == (name.role == PlyParser::INDICES)) {
                roles[i] = name.role;
            }
        }
    }
}

bool hasRoles(const std::vector<PlyParser::Role>& roles, std::initializer_list<PlyParser::Role> wanted)
{
    for (PlyParser::Role role : wanted) {
        if (std::find(roles.begin(), roles.end(), role) == roles.end())
            return false;
    }
    return true;
}

std::uint8_t toColorByte(double value, PlyHeader::Type type)
{
    if (!PlyHeader::isInteger(type))
        value = std::round(value * 255.0);
    if (!(value > 0.0))
        return 0;
    return value >= 255.0 ? 255 : static_cast<std::uint8_t>(value);
}

QString plural(long long count, const std::string& name)
{
    return QStringLiteral("%1 %2 element%3").arg(count).arg(QString::fromStdString(name)).arg(count == 1 ? "" : "s");
}

} // namespace

PlyParser::PlyParser(ReadMonitor* monitor) : MeshParser(monitor), source(nullptr), vertexCount(0), faceNumber(0) {}

bool PlyParser::parse(QIODevice& device, RawMesh& mesh)
{
    reset();
    mesh = RawMesh();
    const qint64 size = device.size() - device.pos();
    if (size <= 0)
        return fail(QStringLiteral("the file is empty"));
    ByteSource bytes(device);
    source = &bytes;
    TextScanner scanner(bytes);
    const bool headerRead = header.parse(scanner);
    warn(header.getWarnings());
    if (!headerRead) {
        if (bytes.hasFailed())
            return failTruncated(bytes, QString());
        return fail(header.getError());
    }
    const PlyHeader::Element* vertices = header.findElement("vertex");
    if (vertices == nullptr)
        return fail(QStringLiteral("the header declares no vertex element"));
    std::vector<Role> roles;
    assignRoles(*vertices, roles);
    if (!hasRoles(roles, {X, Y, Z}))
        return fail(QStringLiteral("the vertex element lacks the properties x, y and z"));
    const PlyHeader::Element* faces = header.findElement("face");
    if (faces != nullptr) {
        const int indices = std::max(faces->find("vertex_indices"), faces->find("vertex_index"));
        if (indices < 0 || !faces->properties[indices].isList || !PlyHeader::isInteger(faces->properties[indices].type))
            return fail(QStringLiteral("the face element has no integer list 'vertex_indices'"));
    }
    vertexCount = vertices->count;
    const bool binary = header.format != PlyHeader::ASCII;
    if (!checkSize(size - bytes.position(), binary))
        return false;

    if (binary) {
        if (countsListener)
            countsListener(static_cast<std::size_t>(vertexCount), faces ? static_cast<std::size_t>(faces->count) : 0);
        BinaryValues values(bytes, header.format == PlyHeader::BINARY_BIG_ENDIAN);
        return readBody(values, mesh);
    }
    TextValues values(scanner);
    if (!readBody(values, mesh))
        return false;
    if (scanner.isOverlong())
        return fail(QStringLiteral("line %1 is too long").arg(scanner.getLineNumber()));
    return true;
}

bool PlyParser::checkSize(qint64 available, bool binary)
{
    qint64 needed = 0;
    for (const PlyHeader::Element& element : header.elements)
        needed += element.count * static_cast<qint64>(element.minimumRecordSize(binary));
    if (needed <= available)
        return true;
    return fail(QStringLiteral("the file is truncated: the header announces %1, which need at least %2 bytes, "
                               "but only %3 follow the header")
                    .arg(describeCounts())
                    .arg(needed)
                    .arg(available));
}

QString PlyParser::describeCounts() const
{
    QStringList parts;
    for (const PlyHeader::Element& element : header.elements)
        parts << plural(element.count, element.name);
    if (parts.size() <= 1)
        return parts.join(QString());
    const QString last = parts.takeLast();
    return parts.join(QStringLiteral(", ")) + QStringLiteral(" and ") + last;
}

template <typename Values>
bool PlyParser::readBody(Values& values, RawMesh& mesh)
{
    for (const PlyHeader::Element& element : header.elements) {
        // An element without properties holds no data, however many it announces: counting
        // through billions of nothing would only stall the load.
        if (element.properties.empty())
            continue;
        if (!readElement(values, element, mesh))
            return false;
    }
    if (values.hasMoreData())
        return fail(values.describe(QStringLiteral("the file holds more data than its header announces (%1)")
                                        .arg(describeCounts())));
    return advance(values.position());
}

template <typename Values>
bool PlyParser::readElement(Values& values, const PlyHeader::Element& element, RawMesh& mesh)
{
    std::vector<Role> roles;
    assignRoles(element, roles);
    const bool isVertex = element.name == "vertex";
    const bool isFace = element.name == "face";
    const bool withNormals = isVertex && hasRoles(roles, {NX, NY, NZ});
    const bool withColors = hasRoles(roles, {RED, GREEN, BLUE});
    if (isVertex) {
        mesh.positions.reserve(3 * element.count);
        if (withNormals)
            mesh.normals.reserve(3 * element.count);
        if (withColors)
            mesh.colors.reserve(4 * element.count);
    } else if (isFace) {
        mesh.faces.reserve(3 * element.count);
        if (withColors)
            mesh.faceColors.reserve(4 * element.count);
    }

    double role[ROLE_COUNT];
    std::vector<double> corners;
    const QString name = QString::fromStdString(element.name);
    for (long long record = 0; record < element.count; ++record) {
        if ((record & 1023) == 0 && !advance(values.position()))
            return false;
        const auto where = [&]() { return QStringLiteral("in %1 %2 of %3").arg(name).arg(record + 1).arg(element.count); };
        std::fill(role, role + ROLE_COUNT, 0.0);
        role[ALPHA] = 255.0;
        PlyHeader::Type colorType = PlyHeader::UINT8;
        corners.clear();
        for (std::size_t p = 0; p < element.properties.size(); ++p) {
            const PlyHeader::Property& property = element.properties[p];
            double value = 0.0;
            long long items = 1;
            if (property.isList) {
                const ReadResult result = values.read(property.countType, value);
                if (result == READ_ENDED)
                    return failTruncated(*source, where());
                if (result == READ_INVALID || value < 0 || value != std::floor(value))
                    return fail(values.describe(QStringLiteral("invalid list length %1").arg(where())));
                items = static_cast<long long>(value);
            }
            for (long long item = 0; item < items; ++item) {
                const ReadResult result = values.read(property.type, value);
                if (result == READ_ENDED)
                    return failTruncated(*source, where());
                if (result == READ_INVALID)
                    return fail(values.describe(QStringLiteral("a number expected %1").arg(where())));
                if (roles[p] == INDICES)
                    corners.push_back(value);
                else if (roles[p] != NONE)
                    role[roles[p]] = value;
            }
            if (roles[p] >= RED && roles[p] <= ALPHA)
                colorType = property.type;
        }
        if (isVertex) {
            if (!std::isfinite(role[X]) || !std::isfinite(role[Y]) || !std::isfinite(role[Z]))
                return fail(QStringLiteral("vertex %1 has a coordinate that is not a finite number").arg(record + 1));
            mesh.positions.insert(mesh.positions.end(), {role[X], role[Y], role[Z]});
            if (withNormals) {
                if (!std::isfinite(role[NX]) || !std::isfinite(role[NY]) || !std::isfinite(role[NZ]))
                    return fail(QStringLiteral("vertex %1 has a normal that is not a finite number").arg(record + 1));
                mesh.normals.insert(mesh.normals.end(), {role[NX], role[NY], role[NZ]});
            }
            if (withColors) {
                mesh.colors.insert(mesh.colors.end(), {toColorByte(role[RED], colorType), toColorByte(role[GREEN], colorType),
                                                       toColorByte(role[BLUE], colorType),
                                                       toColorByte(role[ALPHA], colorType)});
            }
        } else if (isFace) {
            faceNumber = record + 1;
            const unsigned char color[4] = {toColorByte(role[RED], colorType), toColorByte(role[GREEN], colorType),
                                            toColorByte(role[BLUE], colorType), toColorByte(role[ALPHA], colorType)};
            if (!addFace(corners, withColors ? color : nullptr, mesh))
                return false;
        }
    }
    return true;
}

bool PlyParser::addFace(const std::vector<double>& corners, const unsigned char* color, RawMesh& mesh)
{
    if (corners.size() < 3)
        return fail(QStringLiteral("face %1 has %2 corners; a face needs at least three").arg(faceNumber).arg(corners.size()));
    for (double index : corners) {
        if (!(index >= 0.0 && index < static_cast<double>(vertexCount)) || index != std::floor(index)) {
            return fail(QStringLiteral("face %1 uses vertex index %2, but the file has %3 vertices")
                            .arg(faceNumber)
                            .arg(index, 0, 'g', 12)
                            .arg(vertexCount));
        }
    }
    // Polygons become fans around their first corner.
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        mesh.faces.insert(mesh.faces.end(), {static_cast<std::uint32_t>(corners[0]), static_cast<std::uint32_t>(corners[i]),
                                             static_cast<std::uint32_t>(corners[i + 1])});
        if (color != nullptr)
            mesh.faceColors.insert(mesh.faceColors.end(), color, color + 4);
    }
    return true;
}

} // namespace readers
} // namespace io
} // namespace qel
