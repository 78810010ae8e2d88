#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kelvane {

// The kernels take a pixel B, G, R, X as one 32-bit number with B in its low byte.
static_assert(std::endian::native == std::endian::little);

inline constexpr size_t kPixelBytes = 4;
inline constexpr uint32_t kColourBytes = 0x00FFFFFF;  // bytes 0 to 2 of a pixel

// The fast forms work on this many pixels at a time, in arrays that stay in the first cache.
inline constexpr size_t kBlockPixels = 64;

inline uint32_t Load32(const uint8_t* at)
{
    uint32_t word;
    memcpy(&word, at, sizeof word);
    return word;
}

inline void Store32(uint8_t* at, uint32_t word)
{
    memcpy(at, &word, sizeof word);
}

// 0 for a picture without area.
inline size_t PixelCount(int32_t width, int32_t height)
{
    return width > 0 && height > 0 ? static_cast<size_t>(width) * static_cast<size_t>(height) : 0;
}

inline uint8_t LimitToByte(int32_t value)
{
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

}  // namespace kelvane
