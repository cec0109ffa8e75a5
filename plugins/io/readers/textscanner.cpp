#include "plugins/io/readers/textscanner.h"

#include <charconv>

namespace qel {
namespace io {
namespace readers {

namespace {

inline bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

template <typename T>
bool parseWhole(std::string_view text, T& value)
{
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    if (text.empty())
        return false;
    const char* last = text.data() + text.size();
    std::from_chars_result result;
    if constexpr (std::is_floating_point<T>::value)
        result = std::from_chars(text.data(), last, value, std::chars_format::general);
    else
        result = std::from_chars(text.data(), last, value);
    return result.ec == std::errc() && result.ptr == last;
}

} // namespace

TextScanner::TextScanner(ByteSource& source)
    : source(source), commentCharacter(0), line(1), tokenLine(1), overlong(false)
{
}

template <typename Stop>
std::size_t TextScanner::runLength(Stop stop)
{
    std::size_t scanned = 0;
    for (;;) {
        const char* bytes = source.data();
        const std::size_t count = source.available();
        while (scanned < count && !stop(bytes[scanned]))
            ++scanned;
        if (scanned < count)
            return scanned;
        if (scanned >= MAXIMUM_LENGTH) {
            overlong = true;
            return std::string_view::npos;
        }
        if (!source.ensure(count + 1))
            return scanned;
    }
}

bool TextScanner::skipBlanks(bool acrossLines)
{
    for (;;) {
        if (source.available() == 0 && !source.fetch())
            return false;
        const char* bytes = source.data();
        const std::size_t count = source.available();
        std::size_t place = 0;
        for (; place < count; ++place) {
            const char c = bytes[place];
            if (c == '\n') {
                if (!acrossLines)
                    break;
                ++line;
            } else if (commentCharacter != 0 && c == commentCharacter) {
                break;
            } else if (!isSpace(c)) {
                break;
            }
        }
        source.consume(place);
        if (place == count)
            continue;
        if (commentCharacter != 0 && bytes[place] == commentCharacter) {
            // The comment ends at the line break, which stays for the caller.
            while (source.available() > 0 || source.fetch()) {
                const char* rest = source.data();
                std::size_t length = 0;
                while (length < source.available() && rest[length] != '\n')
                    ++length;
                const bool found = length < source.available();
                source.consume(length);
                if (found)
                    break;
            }
            continue;
        }
        return true;
    }
}

bool TextScanner::skipSpace()
{
    return skipBlanks(true);
}

bool TextScanner::nextToken(std::string_view& token)
{
    if (!skipBlanks(true))
        return false;
    tokenLine = line;
    const char comment = commentCharacter;
    const std::size_t length = runLength([comment](char c) { return isSpace(c) || (comment != 0 && c == comment); });
    if (length == std::string_view::npos)
        return false;
    token = std::string_view(source.data(), length);
    source.consume(length);
    return true;
}

bool TextScanner::nextTokenOnLine(std::string_view& token)
{
    if (!skipBlanks(false) || *source.data() == '\n')
        return false;
    return nextToken(token);
}

bool TextScanner::nextLine(std::string_view& text)
{
    if (source.available() == 0 && !source.fetch())
        return false;
    tokenLine = line;
    const std::size_t length = runLength([](char c) { return c == '\n'; });
    if (length == std::string_view::npos)
        return false;
    std::size_t visible = length;
    if (visible > 0 && source.data()[visible - 1] == '\r')
        --visible;
    text = std::string_view(source.data(), visible);
    source.consume(length);
    if (source.available() > 0) {
        source.consume(1);
        ++line;
    }
    return true;
}

void TextScanner::skipLine()
{
    while (source.available() > 0 || source.fetch()) {
        const char* bytes = source.data();
        std::size_t length = 0;
        while (length < source.available() && bytes[length] != '\n')
            ++length;
        if (length < source.available()) {
            source.consume(length + 1);
            ++line;
            return;
        }
        source.consume(length);
    }
}

void TextScanner::split(std::string_view line, std::vector<std::string_view>& tokens, char comment)
{
    tokens.clear();
    std::size_t place = 0;
    const std::size_t length = line.size();
    while (place < length) {
        while (place < length && isSpace(line[place]))
            ++place;
        if (place == length || (comment != 0 && line[place] == comment))
            return;
        const std::size_t start = place;
        while (place < length && !isSpace(line[place]) && !(comment != 0 && line[place] == comment))
            ++place;
        tokens.push_back(line.substr(start, place - start));
    }
}

bool TextScanner::toDouble(std::string_view text, double& value)
{
    return parseWhole(text, value);
}

bool TextScanner::toInteger(std::string_view text, long long& value)
{
    return parseWhole(text, value);
}

std::size_t TextScanner::toLeadingDouble(std::string_view text, double& value)
{
    const std::size_t sign = !text.empty() && text.front() == '+' ? 1 : 0;
    const char* first = text.data() + sign;
    const std::from_chars_result result = std::from_chars(first, text.data() + text.size(), value, std::chars_format::general);
    return result.ec == std::errc() ? sign + static_cast<std::size_t>(result.ptr - first) : 0;
}

} // namespace readers
} // namespace io
} // namespace qel
