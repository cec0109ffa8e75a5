#pragma once

#include <QString>

namespace qel {
namespace util {

class MD5
{
public:
    // Lower-case hexadecimal digest of the UTF-8 form of the text.
    static QString calc(const QString& text);

private:
    MD5() = delete;
};

} // namespace util
} // namespace qel
