#include "plugins/io/readers/objparser.h"

#include "plugins/io/readers/bytesource.h"
#include "plugins/io/readers/textscanner.h"

#include <QIODevice>
#include <cmath>

namespace qel {
namespace io {
namespace readers {

namespace {

std::uint8_t unitToByte(double value)
{
    value = std::round(value * 255.0);
    if (!(value > 0.0))
        return 0;
    return value >= 255.0 ? 255 : static_cast<std::uint8_t>(value);
}

} // namespace

ObjParser::ObjParser(ReadMonitor* monitor) : MeshParser(monitor), lineNumber(0), faceNumber(0) {}

bool ObjParser::parse(QIODevice& device, RawMesh& mesh)
{
    reset();
    mesh = RawMesh();
    faceNumber = 0;
    if (device.size() - device.pos() <= 0)
        return fail(QStringLiteral("the file is empty"));
    ByteSource source(device);
    TextScanner scanner(source);
    std::string_view line;
    std::vector<std::string_view> tokens;
    while (scanner.nextLine(line)) {
        lineNumber = scanner.getLineNumber();
        if ((lineNumber & 1023) == 0 && !advance(scanner.position()))
            return false;
        TextScanner::split(line, tokens, '#');
        if (tokens.empty())
            continue;
        if (tokens[0] == "v") {
            if (!parseVertex(tokens, mesh))
                return false;
        } else if (tokens[0] == "f") {
            if (!parseFace(tokens, mesh))
                return false;
        }
    }
    if (scanner.isOverlong())
        return failAtLine(QStringLiteral("the line is too long"));
    if (source.hasFailed())
        return failTruncated(source, QString());
    return advance(scanner.position());
}

bool ObjParser::parseVertex(const std::vector<std::string_view>& tokens, RawMesh& mesh)
{
    const std::size_t values = tokens.size() - 1;
    if (values < 3)
        return failAtLine(QStringLiteral("a vertex needs three coordinates"));
    double value[6] = {0.0, 0.0, 0.0, 1.0, 1.0, 1.0};
    // "v x y z", "v x y z w" or "v x y z r g b"; a weight w is read past.
    const std::size_t used = values >= 6 ? 6 : 3;
    for (std::size_t i = 0; i < used; ++i) {
        if (!readNumber(tokens[i + 1], value[i]))
            return false;
    }
    const std::size_t vertex = mesh.vertexCount();
    if (!std::isfinite(value[0]) || !std::isfinite(value[1]) || !std::isfinite(value[2]))
        return failAtLine(QStringLiteral("vertex %1 has a coordinate that is not a finite number").arg(vertex + 1));
    mesh.positions.insert(mesh.positions.end(), value, value + 3);
    if (used == 6 && mesh.colors.empty())
        mesh.colors.assign(4 * vertex, 255);
    if (!mesh.colors.empty())
        mesh.colors.insert(mesh.colors.end(), {unitToByte(value[3]), unitToByte(value[4]), unitToByte(value[5]), 255});
    return true;
}

// Writers leave stray characters behind a number ("3.1+e2" for 3.1e+2); as other readers
// do, the number they start with is taken, with a warning.
bool ObjParser::readNumber(std::string_view token, double& value)
{
    if (TextScanner::toDouble(token, value))
        return true;
    if (TextScanner::toLeadingDouble(token, value) == 0)
        return failAtLine(QStringLiteral("a number expected, found %1").arg(quoted(token.data(), token.size())));
    warnAtLine(QStringLiteral("%1 read as %2").arg(quoted(token.data(), token.size())).arg(value, 0, 'g', -1));
    return true;
}

// Points ("f 1") and lines ("f 1 2") are no surface: they are skipped, as the faces of no
// corner that some writers leave.
bool ObjParser::parseFace(const std::vector<std::string_view>& tokens, RawMesh& mesh)
{
    ++faceNumber;
    if (tokens.size() < 4) {
        warnAtLine(QStringLiteral("face %1 has %2 corners, fewer than a face needs: skipped").arg(faceNumber).arg(tokens.size() - 1));
        return true;
    }
    const long long defined = static_cast<long long>(mesh.vertexCount());
    corners.clear();
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        // "v", "v/t", "v//n" or "v/t/n": only the vertex matters here.
        std::string_view corner = tokens[i];
        corner = corner.substr(0, corner.find('/'));
        long long index = 0;
        if (!TextScanner::toInteger(corner, index))
            return failAtLine(QStringLiteral("face %1: a vertex index expected, found %2")
                                  .arg(faceNumber)
                                  .arg(quoted(tokens[i].data(), tokens[i].size())));
        const long long place = index < 0 ? defined + index : index - 1;
        if (index == 0 || place < 0 || place >= defined)
            return failAtLine(QStringLiteral("face %1 uses vertex index %2, but %3 vertices are defined before it")
                                  .arg(faceNumber)
                                  .arg(index)
                                  .arg(defined));
        corners.push_back(static_cast<std::uint32_t>(place));
    }
    for (std::size_t i = 1; i + 1 < corners.size(); ++i)
        mesh.faces.insert(mesh.faces.end(), {corners[0], corners[i], corners[i + 1]});
    return true;
}

bool ObjParser::failAtLine(const QString& reason)
{
    return fail(QStringLiteral("line %1: %2").arg(lineNumber).arg(reason));
}

void ObjParser::warnAtLine(const QString& warning)
{
    warn(QStringLiteral("line %1: %2").arg(lineNumber).arg(warning));
}

} // namespace readers
} // namespace io
} // namespace qel
