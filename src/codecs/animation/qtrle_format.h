#pragma once

#include <cstddef>
#include <cstdint>

#include "format/media_format.h"

// What reader and writer of the QuickTime Animation format share: frames of code "rle ", depth 24
// or 32, all numbers big-endian (QuickTime File Format).

namespace kelvane {

inline constexpr uint16_t kRLELinesStated = 8;  // flag: start line and line count follow
inline constexpr size_t kRLEHeaderSize = 14;    // bytes, with start line and line count
inline constexpr size_t kRLELastLiteral = 127;  // the longest run of literal pixels
inline constexpr uint8_t kRLEEndOfLine = 255;

// Bytes of a pixel in the stream: 3 (R, G, B) or 4 (A, R, G, B), told by the output colour space
// of the format; 0 for the depths that are neither read nor written.
inline size_t RLEPixelBytes(const MediaFormat& encoded)
{
    switch (encoded.Space()) {
        case kBGR24:
            return 3;
        case kBGRX32:
        case kBGRA32:
            return 4;
        default:
            return 0;
    }
}

}  // namespace kelvane
