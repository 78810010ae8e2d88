#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane {

// Repacking of runs of RGB pixels. Source and destination do not overlap; nothing outside the
// pixels named is read or written.
using PixelKernel = void (*)(const uint8_t* source, uint8_t* destination, size_t pixels);

// Three bytes to three: 0 1 2 becomes 2 1 0.
void SwapRedBlue(const uint8_t* source, uint8_t* destination, size_t pixels);
// Three bytes to four: 2 1 0 FF.
void SwapAppendOpaque(const uint8_t* source, uint8_t* destination, size_t pixels);
// Three bytes to four: FF 2 1 0.
void SwapPrependOpaque(const uint8_t* source, uint8_t* destination, size_t pixels);
// Four bytes to three: 0 1 2.
void DropFourth(const uint8_t* source, uint8_t* destination, size_t pixels);
// Four bytes to three: 2 1 0.
void SwapDropFourth(const uint8_t* source, uint8_t* destination, size_t pixels);
// Four bytes to three: 3 2 1.
void ReverseDropFirst(const uint8_t* source, uint8_t* destination, size_t pixels);
// Four bytes to four: 3 2 1 0.
void ReverseBytes(const uint8_t* source, uint8_t* destination, size_t pixels);
// Four bytes to four: 3 2 1 FF.
void ReverseOpaque(const uint8_t* source, uint8_t* destination, size_t pixels);

}  // namespace kelvane
