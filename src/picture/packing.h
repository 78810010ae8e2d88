#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane {

// Widen B, G, R to B, G, R, `fourth` (0 or 0xFF). Source and destination may be the same address.
void Rgb24ToRgb32(const uint8_t* source, uint8_t* destination, size_t pixels, uint8_t fourth);

// Narrow B, G, R, X to B, G, R, in whole 32-bit words: the bytes of the last pixels that do not
// fill a word are not written, so 1 pixel writes nothing, 2 write 4 bytes and 3 write 8. Source and
// destination may be the same address.
void Rgb32ToRgb24(const uint8_t* source, uint8_t* destination, size_t pixels);

// Turns a picture of `height` rows of `pitch` bytes upside down in place.
void SwapVertical(uint8_t* picture, size_t pitch, int32_t height);

// The forms to check by eye; same bytes.
namespace plain {
void Rgb24ToRgb32(const uint8_t* source, uint8_t* destination, size_t pixels, uint8_t fourth);
void Rgb32ToRgb24(const uint8_t* source, uint8_t* destination, size_t pixels);
void SwapVertical(uint8_t* picture, size_t pitch, int32_t height);
}  // namespace plain

}  // namespace kelvane
