#pragma once

#include "plugins/io/readers/bytesource.h"

#include <QString>
#include <string_view>
#include <vector>

namespace qel {
namespace io {
namespace readers {

// Splits text input into whitespace-separated tokens or into lines, counting lines for
// messages. A token or line handed out stays valid until the next call. Numbers are read
// independently of the process locale.
class TextScanner
{
public:
    // Longest token or line accepted; longer ones are a format error, not a memory hog.
    static constexpr std::size_t MAXIMUM_LENGTH = 64 << 20;

    explicit TextScanner(ByteSource& source);

    // With a comment character, tokens skip everything from it to the end of its line.
    void setCommentCharacter(char character) { commentCharacter = character; }

    // The next token across line breaks; false at the end of the input.
    bool nextToken(std::string_view& token);
    // The next token of the current line; false at its end (which is left in place).
    bool nextTokenOnLine(std::string_view& token);
    // The next line without its line break (\n, \r\n or \r); false at the end of the input.
    bool nextLine(std::string_view& line);
    // Skips to the beginning of the next line.
    void skipLine();
    // Skips whitespace (and comments); true if anything but the end of the input follows.
    bool skipSpace();

    // Line of the last token or line handed out, counted from 1.
    int getLineNumber() const { return tokenLine; }
    qint64 position() const { return source.position(); }
    // Set when a token or line exceeded MAXIMUM_LENGTH.
    bool isOverlong() const { return overlong; }

    // Splits a line at blanks, up to a comment character if one is given.
    static void split(std::string_view line, std::vector<std::string_view>& tokens, char comment = 0);
    static bool toDouble(std::string_view text, double& value);
    static bool toInteger(std::string_view text, long long& value);
    // The number at the start of the text; the count of characters it takes, 0 for none.
    static std::size_t toLeadingDouble(std::string_view text, double& value);

private:
    bool skipBlanks(bool acrossLines);
    // Length of the run from the read position up to the first byte for which `stop` is
    // true, fetching input as needed; npos when it would pass MAXIMUM_LENGTH.
    template <typename Stop>
    std::size_t runLength(Stop stop);

    ByteSource& source;
    char commentCharacter;
    int line;
    int tokenLine;
    bool overlong;
};

} // namespace readers
} // namespace io
} // namespace qel
