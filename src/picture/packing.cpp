#include "picture/packing.h"

#include <algorithm>

#include "picture/pixels.h"

namespace kelvane {

namespace plain {

void Rgb24ToRgb32(const uint8_t* source, uint8_t* destination, size_t pixels, uint8_t fourth)
{
    for (size_t i = pixels; i-- > 0;) {  // from the last: the target in place runs ahead
        const uint8_t b = source[3 * i], g = source[3 * i + 1], r = source[3 * i + 2];
        destination[4 * i] = b;
        destination[4 * i + 1] = g;
        destination[4 * i + 2] = r;
        destination[4 * i + 3] = fourth;
    }
}

void Rgb32ToRgb24(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    const size_t bytes = 3 * pixels / 4 * 4;
    for (size_t i = 0; i < bytes; i++)
        destination[i] = source[i / 3 * 4 + i % 3];
}

void SwapVertical(uint8_t* picture, size_t pitch, int32_t height)
{
    for (int32_t top = 0, bottom = height - 1; top < bottom; top++, bottom--) {
        uint8_t* row = picture + static_cast<size_t>(top) * pitch;
        std::swap_ranges(row, row + pitch, picture + static_cast<size_t>(bottom) * pitch);
    }
}

}  // namespace plain

namespace {

constexpr size_t kSwapBytes = 4096;  // of a row at a time

uint64_t Load64(const uint8_t* at)
{
    uint64_t word;
    memcpy(&word, at, sizeof word);
    return word;
}

void Store64(uint8_t* at, uint64_t word)
{
    memcpy(at, &word, sizeof word);
}

// Two pixels of three bytes, in the low six bytes, to two of four.
uint64_t WidenTwo(uint64_t pair, uint64_t fourths)
{
    return (pair & kColourBytes) | (pair >> 24 & kColourBytes) << 32 | fourths;
}

uint64_t NarrowTwo(uint64_t pair)
{
    return (pair & kColourBytes) | (pair >> 32 & kColourBytes) << 24;
}

}  // namespace

void Rgb24ToRgb32(const uint8_t* source, uint8_t* destination, size_t pixels, uint8_t fourth)
{
    // A pair is read as eight bytes, two of them of the next pixel: the last ones go one by one.
    const size_t paired = pixels < 4 ? 0 : (pixels - 2) / 4 * 4;
    plain::Rgb24ToRgb32(source + 3 * paired, destination + 4 * paired, pixels - paired, fourth);
    const uint64_t fourths = uint64_t{fourth} << 24 | uint64_t{fourth} << 56;
    for (size_t i = paired; i > 0; i -= 4) {
        const uint64_t first = Load64(source + 3 * (i - 4)), second = Load64(source + 3 * (i - 2));
        Store64(destination + 4 * (i - 2), WidenTwo(second, fourths));
        Store64(destination + 4 * (i - 4), WidenTwo(first, fourths));
    }
}

void Rgb32ToRgb24(const uint8_t* source, uint8_t* destination, size_t pixels)
{
    const size_t whole = pixels / 4 * 4;
    for (size_t i = 0; i < whole; i += 4) {
        const uint64_t first = NarrowTwo(Load64(source + 4 * i));
        const uint64_t second = NarrowTwo(Load64(source + 4 * i + 8));
        Store64(destination + 3 * i, first | second << 48);
        Store32(destination + 3 * i + 8, static_cast<uint32_t>(second >> 16));
    }
    plain::Rgb32ToRgb24(source + 4 * whole, destination + 3 * whole, pixels - whole);
}

void SwapVertical(uint8_t* picture, size_t pitch, int32_t height)
{
    uint8_t saved[kSwapBytes];
    for (int32_t top = 0, bottom = height - 1; top < bottom; top++, bottom--) {
        uint8_t* upper = picture + static_cast<size_t>(top) * pitch;
        uint8_t* lower = picture + static_cast<size_t>(bottom) * pitch;
        for (size_t at = 0; at < pitch; at += kSwapBytes) {
            const size_t bytes = std::min(kSwapBytes, pitch - at);
            memcpy(saved, upper + at, bytes);
            memcpy(upper + at, lower + at, bytes);
            memcpy(lower + at, saved, bytes);
        }
    }
}

}  // namespace kelvane
