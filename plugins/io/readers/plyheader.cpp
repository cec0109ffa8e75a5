#include "plugins/io/readers/plyheader.h"

#include "plugins/io/readers/meshparser.h"
#include "plugins/io/readers/textscanner.h"

#include <limits>
#include <map>

namespace qel {
namespace io {
namespace readers {

namespace {

// No header of a real file comes near this; anything longer is not a PLY header.
const int MAXIMUM_HEADER_LINES = 10000;

bool typeByName(const std::string& name, PlyHeader::Type& type)
{
    static const std::map<std::string, PlyHeader::Type> types = {
        {"char", PlyHeader::INT8},      {"int8", PlyHeader::INT8},       {"uchar", PlyHeader::UINT8},
        {"uint8", PlyHeader::UINT8},    {"short", PlyHeader::INT16},     {"int16", PlyHeader::INT16},
        {"ushort", PlyHeader::UINT16},  {"uint16", PlyHeader::UINT16},   {"int", PlyHeader::INT32},
        {"int32", PlyHeader::INT32},    {"uint", PlyHeader::UINT32},     {"uint32", PlyHeader::UINT32},
        {"float", PlyHeader::FLOAT32},  {"float32", PlyHeader::FLOAT32}, {"double", PlyHeader::FLOAT64},
        {"float64", PlyHeader::FLOAT64}};
    const auto found = types.find(name);
    if (found == types.end())
        return false;
    type = found->second;
    return true;
}

std::vector<std::string> splitWords(std::string_view line)
{
    std::vector<std::string> words;
    std::size_t place = 0;
    while (place < line.size()) {
        while (place < line.size() && (line[place] == ' ' || line[place] == '\t'))
            ++place;
        const std::size_t start = place;
        while (place < line.size() && line[place] != ' ' && line[place] != '\t')
            ++place;
        if (place > start)
            words.emplace_back(line.substr(start, place - start));
    }
    return words;
}

QString shown(const std::string& word)
{
    return MeshParser::quoted(word.data(), word.size());
}

} // namespace

int PlyHeader::Element::find(const char* propertyName) const
{
    for (std::size_t i = 0; i < properties.size(); ++i) {
        if (properties[i].name == propertyName)
            return static_cast<int>(i);
    }
    return -1;
}

std::size_t PlyHeader::Element::fixedRecordSize() const
{
    std::size_t size = 0;
    for (const Property& property : properties) {
        if (property.isList)
            return 0;
        size += sizeOf(property.type);
    }
    return size;
}

std::size_t PlyHeader::Element::minimumRecordSize(bool binary) const
{
    std::size_t size = 0;
    for (const Property& property : properties) {
        // A list may be empty; then only its count is there.
        if (binary)
            size += sizeOf(property.isList ? property.countType : property.type);
        else
            size += 2;
    }
    return size;
}

std::size_t PlyHeader::sizeOf(Type type)
{
    switch (type) {
    case INT8:
    case UINT8:
        return 1;
    case INT16:
    case UINT16:
        return 2;
    case INT32:
    case UINT32:
    case FLOAT32:
        return 4;
    case FLOAT64:
        return 8;
    }
    return 0;
}

const PlyHeader::Element* PlyHeader::findElement(const char* name) const
{
    for (const Element& element : elements) {
        if (element.name == name)
            return &element;
    }
    return nullptr;
}

bool PlyHeader::parse(TextScanner& scanner)
{
    error.clear();
    warnings.clear();
    elements.clear();
    std::string_view line;
    if (!scanner.nextLine(line) || splitWords(line) != std::vector<std::string>{"ply"})
        return fail(QStringLiteral("it is not a PLY file: the first line is not 'ply'"));
    bool formatSeen = false;
    for (int lines = 0; lines < MAXIMUM_HEADER_LINES; ++lines) {
        if (!scanner.nextLine(line))
            return fail(QStringLiteral("the file is truncated: it ends before 'end_header'"));
        const std::vector<std::string> words = splitWords(line);
        if (words.empty())
            continue;
        if (words[0] == "end_header") {
            if (!formatSeen)
                return fail(QStringLiteral("the header has no 'format' line"));
            return true;
        }
        if (words[0] == "format") {
            if (words.size() < 2)
                return fail(QStringLiteral("header line %1: the format is missing").arg(scanner.getLineNumber()));
            if (words[1] == "ascii")
                format = ASCII;
            else if (words[1] == "binary_little_endian")
                format = BINARY_LITTLE_ENDIAN;
            else if (words[1] == "binary_big_endian")
                format = BINARY_BIG_ENDIAN;
            else
                return fail(QStringLiteral("header line %1: unknown format %2").arg(scanner.getLineNumber()).arg(shown(words[1])));
            formatSeen = true;
            continue;
        }
        if (!parseLine(words, scanner.getLineNumber()))
            return false;
    }
    return fail(QStringLiteral("the header does not end within %1 lines").arg(MAXIMUM_HEADER_LINES));
}

bool PlyHeader::parseLine(const std::vector<std::string>& words, int lineNumber)
{
    const std::string& keyword = words[0];
    if (keyword == "comment" || keyword == "obj_info")
        return true;
    if (keyword == "element") {
        long long count = -1;
        if (words.size() != 3 || !TextScanner::toInteger(words[2], count) || count < 0)
            return fail(QStringLiteral("header line %1: 'element NAME COUNT' expected").arg(lineNumber));
        // Mesh sizes are ints; a larger count cannot be loaded and is no honest count.
        if (count > std::numeric_limits<int>::max())
            return fail(QStringLiteral("header line %1: the header announces %2 %3 elements, more than can be loaded")
                            .arg(lineNumber)
                            .arg(count)
                            .arg(QString::fromStdString(words[1])));
        if (findElement(words[1].c_str()))
            return fail(QStringLiteral("header line %1: a second element %2").arg(lineNumber).arg(shown(words[1])));
        Element element;
        element.name = words[1];
        element.count = count;
        elements.push_back(element);
        return true;
    }
    if (keyword == "property")
        return parseProperty(words, lineNumber);
    warnings.add(QStringLiteral("header line %1: skipped, unknown keyword %2").arg(lineNumber).arg(shown(keyword)));
    return true;
}

bool PlyHeader::parseProperty(const std::vector<std::string>& words, int lineNumber)
{
    if (elements.empty())
        return fail(QStringLiteral("header line %1: a property before any element").arg(lineNumber));
    Property property;
    if (words.size() == 5 && words[1] == "list") {
        property.isList = true;
        if (!typeByName(words[2], property.countType) || !typeByName(words[3], property.type))
            return fail(QStringLiteral("header line %1: unknown type in the list property").arg(lineNumber));
        if (!isInteger(property.countType))
            return fail(QStringLiteral("header line %1: the count of a list must be an integer type").arg(lineNumber));
        property.name = words[4];
    } else if (words.size() == 3) {
        if (!typeByName(words[1], property.type))
            return fail(QStringLiteral("header line %1: unknown type %2").arg(lineNumber).arg(shown(words[1])));
        property.name = words[2];
    } else {
        return fail(QStringLiteral("header line %1: 'property TYPE NAME' or 'property list COUNTTYPE TYPE NAME' "
                                   "expected")
                        .arg(lineNumber));
    }
    elements.back().properties.push_back(property);
    return true;
}

bool PlyHeader::fail(const QString& reason)
{
    error = reason;
    return false;
}

} // namespace readers
} // namespace io
} // namespace qel
