#pragma once

#include "plugins/io/readers/readwarnings.h"

#include <QString>
#include <string>
#include <vector>

namespace qel {
namespace io {
namespace readers {

class TextScanner;

// The header of a PLY file: its format and the elements with their properties, in the
// order in which their data follows.
class PlyHeader
{
public:
    enum Format { ASCII, BINARY_LITTLE_ENDIAN, BINARY_BIG_ENDIAN };
    enum Type { INT8, UINT8, INT16, UINT16, INT32, UINT32, FLOAT32, FLOAT64 };

    struct Property
    {
        std::string name;
        Type type = FLOAT32;
        bool isList = false;
        Type countType = UINT8;
    };

    struct Element
    {
        std::string name;
        long long count = 0;
        std::vector<Property> properties;

        // Place of the property with this name, or -1.
        int find(const char* propertyName) const;
        // Bytes of one record in a binary file, or 0 when it holds a list.
        std::size_t fixedRecordSize() const;
        // Bytes one record needs at least: binary, or ASCII with one-digit values.
        std::size_t minimumRecordSize(bool binary) const;
    };

    static std::size_t sizeOf(Type type);
    static bool isInteger(Type type) { return type != FLOAT32 && type != FLOAT64; }

    // Reads the header up to and including its "end_header" line. Lines with a keyword of
    // no known meaning are skipped with a warning, as writers put free text there.
    bool parse(TextScanner& scanner);
    const QString& getError() const { return error; }
    const ReadWarnings& getWarnings() const { return warnings; }

    Format format = ASCII;
    std::vector<Element> elements;

    const Element* findElement(const char* name) const;

private:
    bool parseLine(const std::vector<std::string>& words, int lineNumber);
    bool parseProperty(const std::vector<std::string>& words, int lineNumber);
    bool fail(const QString& reason);

    QString error;
    ReadWarnings warnings;
};

} // namespace readers
} // namespace io
} // namespace qel
