#pragma once

#include <cstdint>

namespace qel {
namespace scene {

// Hands out vertex flag bits above the reserved ones, one counter per thread, so that loads
// on different threads can mark their meshes at the same time. A thread starts at 512, so
// its first bit is 1024; bits are given back in the reverse order of taking them.
class VertexUserBits
{
public:
    static std::uint32_t newBit();
    // Frees the bit if it is the thread's last one; returns whether it was.
    static bool deleteBit(std::uint32_t bit);
    // The thread's last bit handed out (512 when it has none).
    static std::uint32_t lastBit();

private:
    VertexUserBits() = delete;
};

} // namespace scene
} // namespace qel
