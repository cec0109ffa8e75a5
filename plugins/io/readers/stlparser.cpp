#include "plugins/io/readers/stlparser.h"

#include "plugins/io/readers/bytesource.h"
#include "plugins/io/readers/textscanner.h"

#include <QIODevice>
#include <QtEndian>
#include <cctype>
#include <cmath>
#include <cstring>

namespace qel {
namespace io {
namespace readers {

namespace {

const std::size_t HEADER_SIZE = 84;
const std::size_t RECORD_SIZE = 50;
const std::size_t TEXT_PROBE = 512;

bool equalsKeyword(std::string_view token, const char* keyword)
{
    const std::size_t length = std::strlen(keyword);
    if (token.size() != length)
        return false;
    for (std::size_t i = 0; i < length; ++i) {
        char c = token[i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != keyword[i])
            return false;
    }
    return true;
}

float littleEndianFloat(const char* bytes)
{
    const quint32 word = qFromLittleEndian<quint32>(bytes);
    float value;
    std::memcpy(&value, &word, sizeof value);
    return value;
}

} // namespace

StlParser::TriangleSink::~TriangleSink() = default;

void StlParser::TriangleSink::expect(std::size_t) {}

StlParser::StlParser(ReadMonitor* monitor) : MeshParser(monitor), binary(false), triangles(0) {}

bool StlParser::looksLikeText(const char* head, std::size_t headLength, qint64 fileSize)
{
    std::size_t start = 0;
    while (start < headLength && std::isspace(static_cast<unsigned char>(head[start])))
        ++start;
    if (headLength - start < 5 || !equalsKeyword(std::string_view(head + start, 5), "solid"))
        return false;
    // Binary files may begin with "solid" too; their size then matches their triangle count.
    if (headLength >= HEADER_SIZE && fileSize >= static_cast<qint64>(HEADER_SIZE)) {
        const quint32 count = qFromLittleEndian<quint32>(head + 80);
        if (fileSize == static_cast<qint64>(HEADER_SIZE + RECORD_SIZE * static_cast<qint64>(count)))
            return false;
    }
    for (std::size_t i = 0; i < headLength; ++i) {
        const unsigned char c = static_cast<unsigned char>(head[i]);
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            return false;
        if (c >= 0x7f)
            return false;
    }
    return true;
}

bool StlParser::parse(QIODevice& device, TriangleSink& sink)
{
    reset();
    binary = false;
    triangles = 0;
    const qint64 size = device.size() - device.pos();
    if (size <= 0)
        return fail(QStringLiteral("the file is empty"));

    ByteSource source(device);
    source.ensure(static_cast<std::size_t>(std::min<qint64>(size, TEXT_PROBE)));
    if (source.hasFailed())
        return failTruncated(source, QString());
    if (looksLikeText(source.data(), source.available(), size))
        return parseText(source, sink);
    binary = true;
    return parseBinary(source, size, sink);
}

bool StlParser::parseBinary(ByteSource& source, qint64 size, TriangleSink& sink)
{
    if (size < static_cast<qint64>(HEADER_SIZE) || !source.ensure(HEADER_SIZE))
        return fail(QStringLiteral("the file is truncated: it has %1 bytes, less than the 84 of a binary STL header")
                        .arg(size));
    const quint32 count = qFromLittleEndian<quint32>(source.data() + 80);
    source.consume(HEADER_SIZE);
    const qint64 needed = static_cast<qint64>(HEADER_SIZE) + static_cast<qint64>(RECORD_SIZE) * count;
    if (size < needed) {
        return fail(QStringLiteral("the file is truncated: its header announces %1 triangles, which need %2 bytes, "
                                   "but the file has %3")
                        .arg(count)
                        .arg(needed)
                        .arg(size));
    }
    if (count == 0)
        return fail(QStringLiteral("the file holds no triangles"));

    sink.expect(count);
    std::vector<double> batch;
    batch.reserve(BATCH_SIZE * 9);
    std::size_t done = 0;
    while (done < count) {
        const std::size_t now = std::min<std::size_t>(BATCH_SIZE, count - done);
        if (!source.ensure(now * RECORD_SIZE))
            return failTruncated(source, QStringLiteral("in triangle %1 of %2").arg(done + 1).arg(count));
        const char* record = source.data();
        batch.resize(now * 9);
        double* out = batch.data();
        for (std::size_t t = 0; t < now; ++t, record += RECORD_SIZE) {
            // 12 bytes of facet normal, 36 of corners, 2 of attributes.
            const char* corner = record + 12;
            for (int i = 0; i < 9; ++i) {
                const float value = littleEndianFloat(corner + 4 * i);
                if (!std::isfinite(value))
                    return fail(QStringLiteral("triangle %1 has a coordinate that is not a finite number")
                                    .arg(done + t + 1));
                *out++ = value;
            }
        }
        source.consume(now * RECORD_SIZE);
        done += now;
        triangles = done;
        if (!flush(batch, sink, source.position()))
            return false;
    }
    return true;
}

bool StlParser::parseText(ByteSource& source, TriangleSink& sink)
{
    TextScanner scanner(source);
    std::vector<double> batch;
    batch.reserve(BATCH_SIZE * 9);
    std::string_view token;
    if (!expectKeyword(scanner, "solid"))
        return false;
    scanner.skipLine();
    for (;;) {
        if (!scanner.nextToken(token)) {
            if (scanner.isOverlong())
                return fail(QStringLiteral("line %1 is too long").arg(scanner.getLineNumber()));
            return failTruncated(source, QStringLiteral("before 'endsolid'"));
        }
        if (equalsKeyword(token, "facet")) {
            if (!parseFacet(scanner, batch))
                return false;
            if (batch.size() == BATCH_SIZE * 9 && !flush(batch, sink, scanner.position()))
                return false;
            continue;
        }
        if (!equalsKeyword(token, "endsolid"))
            return fail(QStringLiteral("line %1: 'facet' or 'endsolid' expected, found %2")
                            .arg(scanner.getLineNumber())
                            .arg(quoted(token.data(), token.size())));
        scanner.skipLine();
        // Several solids may follow each other.
        if (!scanner.skipSpace())
            break;
        if (!expectKeyword(scanner, "solid"))
            return false;
        scanner.skipLine();
    }
    if (!flush(batch, sink, scanner.position()))
        return false;
    if (triangles == 0)
        return fail(QStringLiteral("the file holds no triangles"));
    return true;
}

bool StlParser::parseFacet(TextScanner& scanner, std::vector<double>& batch)
{
    std::string_view token;
    // The facet normal is skipped: exporters write anything there, "nan" included.
    if (!expectKeyword(scanner, "normal"))
        return false;
    for (int i = 0; i < 3; ++i) {
        if (!scanner.nextToken(token))
            return fail(QStringLiteral("the file is truncated: it ends in a facet normal"));
    }
    if (!expectKeyword(scanner, "outer") || !expectKeyword(scanner, "loop"))
        return false;
    for (int corner = 0; corner < 3; ++corner) {
        if (!expectKeyword(scanner, "vertex"))
            return false;
        for (int axis = 0; axis < 3; ++axis) {
            double value = 0.0;
            if (!readNumber(scanner, value))
                return false;
            batch.push_back(value);
        }
    }
    if (!expectKeyword(scanner, "endloop") || !expectKeyword(scanner, "endfacet"))
        return false;
    ++triangles;
    return true;
}

bool StlParser::expectKeyword(TextScanner& scanner, const char* keyword)
{
    std::string_view token;
    if (!scanner.nextToken(token)) {
        if (scanner.isOverlong())
            return fail(QStringLiteral("line %1 is too long").arg(scanner.getLineNumber()));
        return fail(QStringLiteral("the file is truncated: it ends where '%1' is expected").arg(keyword));
    }
    if (equalsKeyword(token, keyword))
        return true;
    return fail(QStringLiteral("line %1: '%2' expected, found %3")
                    .arg(scanner.getLineNumber())
                    .arg(keyword)
                    .arg(quoted(token.data(), token.size())));
}

bool StlParser::readNumber(TextScanner& scanner, double& value)
{
    std::string_view token;
    if (!scanner.nextToken(token))
        return fail(QStringLiteral("the file is truncated: it ends in a vertex"));
    if (!TextScanner::toDouble(token, value))
        return fail(QStringLiteral("line %1: a number expected, found %2")
                        .arg(scanner.getLineNumber())
                        .arg(quoted(token.data(), token.size())));
    if (!std::isfinite(value))
        return fail(QStringLiteral("line %1: triangle %2 has a coordinate that is not a finite number")
                        .arg(scanner.getLineNumber())
                        .arg(triangles + 1));
    return true;
}

bool StlParser::flush(std::vector<double>& batch, TriangleSink& sink, qint64 position)
{
    if (!batch.empty())
        sink.add(batch.data(), batch.size() / 9);
    batch.clear();
    return advance(position);
}

} // namespace readers
} // namespace io
} // namespace qel
