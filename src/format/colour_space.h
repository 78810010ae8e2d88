#pragma once

#include <cstdint>

namespace kelvane {

// Layouts of a pixel in memory, first byte first.
enum ColourSpace : uint32_t {
    kBGR24 = 3,
    kRGB24 = 5,
    kRGBX32 = 6,
    kBGRX32 = 8,  // what flows between the stages of a conversion, top row first
    kBGRA32 = 8200,
    kYUY2 = 16389,
    kUYVY = 16416,
    kVYU24 = 16419,
    kYUVSigned = 16421,  // YUY2 with the top bit of U and V flipped (QuickTime "yuv2")
};

}  // namespace kelvane
