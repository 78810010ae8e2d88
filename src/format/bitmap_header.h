#pragma once

#include <cstdint>
#include <span>

#include "base/field_table.h"

namespace kelvane {

// BITMAPINFOHEADER of Windows bitmaps, as used in AVI "strf" chunks and spoken by codecs.
struct BitmapHeader {
    uint32_t size = 40;  // bytes of the header with the codec data behind it
    int32_t width = 0;
    int32_t height = 0;
    uint16_t planes = 1;
    uint16_t bit_count = 0;
    uint32_t compression = 0;  // a four-character code; 0 is plain RGB
    uint32_t size_image = 0;   // bytes
    int32_t x_pels_per_meter = 0;
    int32_t y_pels_per_meter = 0;
    uint32_t clr_used = 0;
    uint32_t clr_important = 0;
};

// The same as it stands in files, little-endian. Data of the codec may follow.
inline constexpr auto kBitmapInfo = HeaderFields<40>({
    {"dwSize", 0, 4},
    {"biWidth", 4, 4},
    {"biHeight", 8, 4},
    {"biPlanes", 12, 2},
    {"biBitCount", 14, 2},
    {"biCompression", 16, 4, true},
    {"biSizeImage", 20, 4},
    {"biXPelsPerMeter", 24, 4},
    {"biYPelsPerMeter", 28, 4},
    {"num_colours", 32, 4},
    {"imp_colours", 36, 4},
});

// What lies beyond a short body is 0.
BitmapHeader LoadBitmapHeader(std::span<const uint8_t> body);
// The body has room for it.
void StoreBitmapHeader(const BitmapHeader& header, std::span<uint8_t> body);

}  // namespace kelvane
