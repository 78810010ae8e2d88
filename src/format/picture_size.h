#pragma once

#include <cstddef>
#include <cstdint>

#include "format/media_format.h"

namespace kelvane {

// The bytes of a picture whose rows follow one another without padding.
struct PictureSize {
    // `pixelBytes` from 1 to 4. Sizes below 0 are no picture.
    PictureSize(const MediaFormat& format, size_t pixelBytes)
        : valid(format.IsVideo() && format.Width() >= 0 && format.Height() >= 0)
    {
        if (!valid) return;
        width = static_cast<uint32_t>(format.Width());
        height = static_cast<uint32_t>(format.Height());
        row_bytes = width * pixelBytes;
        // Three factors below 2^31, 2^31 and 5 can pass 2^64, but not before this bound.
        valid = height == 0 || row_bytes <= UINT32_MAX / height;
        bytes = valid ? row_bytes * height : 0;
    }
    bool FitsIn(size_t room) const { return valid && bytes <= room; }

    bool valid;  // a picture whose bytes can be counted in 32 bits
    size_t width = 0;
    size_t height = 0;
    size_t row_bytes = 0;
    size_t bytes = 0;
};

}  // namespace kelvane
