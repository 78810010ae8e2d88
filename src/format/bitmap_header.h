#pragma once

#include <cstdint>

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

}  // namespace kelvane
