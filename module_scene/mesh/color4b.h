#pragma once

#include <cstdint>
#include <cstring>

namespace qel {
namespace scene {

// A colour as four bytes in memory order R, G, B, A, so that glColor4ubv takes it as it is.
// As a 32-bit word it is those four bytes read in the machine's order.
struct Color4b
{
    unsigned char rgba[4];

    static Color4b fromRgba(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
    {
        return Color4b{{r, g, b, a}};
    }
    static Color4b white() { return fromRgba(255, 255, 255, 255); }

    static Color4b fromWord(std::uint32_t word)
    {
        Color4b colour;
        std::memcpy(colour.rgba, &word, sizeof word);
        return colour;
    }
    std::uint32_t toWord() const
    {
        std::uint32_t word;
        std::memcpy(&word, rgba, sizeof word);
        return word;
    }

    unsigned char& operator[](int channel) { return rgba[channel]; }
    unsigned char operator[](int channel) const { return rgba[channel]; }

    bool operator==(const Color4b& other) const { return toWord() == other.toWord(); }
    bool operator!=(const Color4b& other) const { return !(*this == other); }
};

} // namespace scene
} // namespace qel
