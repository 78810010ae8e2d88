#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane {

// RGB, bottom row first, to YUY2, top row first: the conversion that HuffYUV has of its own, which
// rounds and takes chroma from the sum of a pair. `pixelBytes` is 3 or 4 (B, G, R first), the width
// is even.
void BottomUpRgbToYuy2(const uint8_t* source, size_t pixelBytes, size_t width, size_t height,
                       uint8_t* destination);

}  // namespace kelvane
