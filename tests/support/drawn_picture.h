#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/byte_cursor.h"

namespace kelvane {

// A picture like those of a camera: smooth shapes, edges and noise up to about `noise` up or down
// in every sample. Rows of width * pixelBytes bytes.
inline Bytes DrawPicture(size_t width, size_t height, size_t pixelBytes, int noise)
{
    constexpr double kAmplitude = 60;
    const size_t rowBytes = width * pixelBytes;
    std::vector<double> across(rowBytes);
    for (size_t i = 0; i < rowBytes; i++)
        across[i] = std::sin(static_cast<double>(i / pixelBytes) / 57 + i % pixelBytes * 0.7);
    Bytes picture(rowBytes * height);
    uint32_t random = 1;
    for (size_t y = 0; y < height; y++) {
        const double down = kAmplitude * std::cos(static_cast<double>(y) / 43);
        for (size_t i = 0; i < rowBytes; i++) {
            random = random * 1664525 + 1013904223;
            // The sum of two throws: small deviations are the most frequent.
            const int grain = static_cast<int>(random >> 24) + static_cast<int>(random >> 16 & 255);
            const bool edge = (i / pixelBytes / 90 + y / 70) % 2 == 1;
            const int value = 110 + static_cast<int>(across[i] * down) + (edge ? 40 : 0) +
                              (grain - 255) * noise / 255;
            picture[y * rowBytes + i] = static_cast<uint8_t>(std::clamp(value, 0, 255));
        }
    }
    return picture;
}

}  // namespace kelvane
