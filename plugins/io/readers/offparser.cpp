#include "plugins/io/readers/offparser.h"

#include "plugins/io/readers/bytesource.h"
#include "plugins/io/readers/textscanner.h"

#include <QIODevice>
#include <cmath>
#include <limits>

namespace qel {
namespace io {
namespace readers {

namespace {

bool looksFractional(std::string_view token)
{
    return token.find_first_of(".eE") != std::string_view::npos;
}

} // namespace

OffParser::OffParser(ReadMonitor* monitor)
    : MeshParser(monitor), withNormals(false), withColors(false), vertexCount(0), faceCount(0), lineNumber(0)
{
}

bool OffParser::parse(QIODevice& device, RawMesh& mesh)
{
    reset();
    mesh = RawMesh();
    withNormals = false;
    withColors = false;
    const qint64 size = device.size() - device.pos();
    if (size <= 0)
        return fail(QStringLiteral("the file is empty"));
    ByteSource source(device);
    TextScanner scanner(source);
    if (!nextDataLine(scanner))
        return fail(QStringLiteral("the file holds no header"));
    std::size_t first = 0;
    // The keyword may be missing; then the counts come first.
    long long probe = 0;
    if (!TextScanner::toInteger(tokens[0], probe)) {
        if (!parseKeyword(tokens[0]))
            return false;
        first = 1;
        if (tokens.size() == 1) {
            if (!nextDataLine(scanner))
                return failTruncated(source, QStringLiteral("before the vertex and face counts"));
            first = 0;
        }
    }
    if (!parseCounts(first))
        return false;
    // A vertex line holds at least three numbers, a face line at least four.
    if ((vertexCount * 6 + faceCount * 8) > size)
        return fail(QStringLiteral("the file is truncated: the header announces %1 vertices and %2 faces, more than "
                                   "its %3 bytes can hold")
                        .arg(vertexCount)
                        .arg(faceCount)
                        .arg(size));

    mesh.positions.reserve(3 * vertexCount);
    for (long long vertex = 0; vertex < vertexCount; ++vertex) {
        if ((vertex & 1023) == 0 && !advance(scanner.position()))
            return false;
        if (!nextDataLine(scanner))
            return failTruncated(source, QStringLiteral("in vertex %1 of %2").arg(vertex + 1).arg(vertexCount));
        if (!parseVertex(static_cast<std::size_t>(vertex), mesh))
            return false;
    }
    mesh.faces.reserve(3 * faceCount);
    for (long long face = 0; face < faceCount; ++face) {
        if ((face & 1023) == 0 && !advance(scanner.position()))
            return false;
        if (!nextDataLine(scanner))
            return failTruncated(source, QStringLiteral("in face %1 of %2").arg(face + 1).arg(faceCount));
        if (!parseFace(static_cast<std::size_t>(face), mesh))
            return false;
    }
    if (nextDataLine(scanner))
        return failAtLine(QStringLiteral("the file holds more data than its header announces (%1 vertices and %2 faces)")
                              .arg(vertexCount)
                              .arg(faceCount));
    if (scanner.isOverlong())
        return failAtLine(QStringLiteral("the line is too long"));
    if (source.hasFailed())
        return failTruncated(source, QString());
    return advance(scanner.position());
}

bool OffParser::nextDataLine(TextScanner& scanner)
{
    std::string_view line;
    while (scanner.nextLine(line)) {
        lineNumber = scanner.getLineNumber();
        TextScanner::split(line, tokens, '#');
        if (!tokens.empty())
            return true;
    }
    return false;
}

bool OffParser::parseKeyword(std::string_view keyword)
{
    std::string_view rest = keyword;
    if (rest.substr(0, 2) == "ST")
        rest.remove_prefix(2);
    if (rest.substr(0, 1) == "C") {
        withColors = true;
        rest.remove_prefix(1);
    }
    if (rest.substr(0, 1) == "N") {
        withNormals = true;
        rest.remove_prefix(1);
    }
    if (rest == "OFF")
        return true;
    if (rest.size() > 3 && rest.substr(rest.size() - 3) == "OFF")
        return failAtLine(QStringLiteral("the variant %1 is not supported").arg(quoted(keyword.data(), keyword.size())));
    return fail(QStringLiteral("it is not an OFF file: it does not start with 'OFF'"));
}

bool OffParser::parseCounts(std::size_t first)
{
    if (tokens.size() < first + 2)
        return failAtLine(QStringLiteral("the vertex and face counts are missing"));
    if (!TextScanner::toInteger(tokens[first], vertexCount) || !TextScanner::toInteger(tokens[first + 1], faceCount)
        || vertexCount < 0 || faceCount < 0)
        return failAtLine(QStringLiteral("the vertex and face counts must be whole numbers of at least 0"));
    if (vertexCount > std::numeric_limits<int>::max() || faceCount > std::numeric_limits<int>::max())
        return failAtLine(QStringLiteral("the header announces %1 vertices and %2 faces, more than can be loaded")
                              .arg(vertexCount)
                              .arg(faceCount));
    return true;
}

bool OffParser::parseVertex(std::size_t vertex, RawMesh& mesh)
{
    const std::size_t needed = 3 + (withNormals ? 3 : 0) + (withColors ? 3 : 0);
    if (tokens.size() < needed)
        return failAtLine(QStringLiteral("vertex %1 needs %2 values, the line has %3").arg(vertex + 1).arg(needed).arg(tokens.size()));
    double value[6];
    const std::size_t numbers = withNormals ? 6 : 3;
    for (std::size_t i = 0; i < numbers; ++i) {
        if (!TextScanner::toDouble(tokens[i], value[i]))
            return failAtLine(QStringLiteral("a number expected, found %1").arg(quoted(tokens[i].data(), tokens[i].size())));
    }
    if (!std::isfinite(value[0]) || !std::isfinite(value[1]) || !std::isfinite(value[2]))
        return failAtLine(QStringLiteral("vertex %1 has a coordinate that is not a finite number").arg(vertex + 1));
    mesh.positions.insert(mesh.positions.end(), value, value + 3);
    if (withNormals) {
        if (!std::isfinite(value[3]) || !std::isfinite(value[4]) || !std::isfinite(value[5]))
            return failAtLine(QStringLiteral("vertex %1 has a normal that is not a finite number").arg(vertex + 1));
        mesh.normals.insert(mesh.normals.end(), value + 3, value + 6);
    }
    if (withColors) {
        std::uint8_t color[4] = {255, 255, 255, 255};
        if (!readColor(numbers, color))
            return false;
        mesh.colors.insert(mesh.colors.end(), color, color + 4);
    }
    return true;
}

bool OffParser::parseFace(std::size_t face, RawMesh& mesh)
{
    long long count = 0;
    if (!TextScanner::toInteger(tokens[0], count) || count < 0)
        return failAtLine(QStringLiteral("face %1: a corner count expected, found %2").arg(face + 1).arg(quoted(tokens[0].data(), tokens[0].size())));
    if (count < 3)
        return failAtLine(QStringLiteral("face %1 has %2 corners; a face needs at least three").arg(face + 1).arg(count));
    if (static_cast<long long>(tokens.size()) < count + 1)
        return failAtLine(QStringLiteral("face %1 announces %2 corners, the line has %3").arg(face + 1).arg(count).arg(tokens.size() - 1));
    corners.clear();
    for (long long i = 1; i <= count; ++i) {
        long long index = 0;
        if (!TextScanner::toInteger(tokens[i], index))
            return failAtLine(QStringLiteral("face %1: a vertex index expected, found %2").arg(face + 1).arg(quoted(tokens[i].data(), tokens[i].size())));
        if (index < 0 || index >= vertexCount)
            return failAtLine(QStringLiteral("face %1 uses vertex index %2, but the file has %3 vertices")
                                  .arg(face + 1)
                                  .arg(index)
                                  .arg(vertexCount));
        corners.push_back(static_cast<std::uint32_t>(index));
    }
    // A colour may follow the indices: three or four values; a single colour map index is read past.
    const std::size_t colorStart = static_cast<std::size_t>(count) + 1;
    const bool colored = tokens.size() >= colorStart + 3;
    std::uint8_t color[4] = {255, 255, 255, 255};
    if (colored) {
        if (!readColor(colorStart, color))
            return false;
        if (mesh.faceColors.empty())
            mesh.faceColors.assign(4 * mesh.faceCount(), 255);
    }
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        mesh.faces.insert(mesh.faces.end(), {corners[0], corners[i], corners[i + 1]});
        if (!mesh.faceColors.empty())
            mesh.faceColors.insert(mesh.faceColors.end(), color, color + 4);
    }
    return true;
}

bool OffParser::readColor(std::size_t first, std::uint8_t* color)
{
    const std::size_t channels = std::min<std::size_t>(tokens.size() - first, 4);
    for (std::size_t i = 0; i < channels; ++i) {
        double value = 0.0;
        if (!TextScanner::toDouble(tokens[first + i], value))
            return failAtLine(QStringLiteral("a colour value expected, found %1").arg(quoted(tokens[first + i].data(), tokens[first + i].size())));
        // Colours come as bytes 0..255 or as fractions 0..1.
        if (looksFractional(tokens[first + i]))
            value *= 255.0;
        value = std::round(value);
        color[i] = !(value > 0.0) ? 0 : value >= 255.0 ? 255 : static_cast<std::uint8_t>(value);
    }
    return true;
}

bool OffParser::failAtLine(const QString& reason)
{
    return fail(QStringLiteral("line %1: %2").arg(lineNumber).arg(reason));
}

} // namespace readers
} // namespace io
} // namespace qel
