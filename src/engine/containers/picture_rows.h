#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "format/media_format.h"

namespace kelvane {

// What a row of a raw picture of 24 bits is a multiple of, in bytes.
inline constexpr size_t kAVIRowMultiple = 4;
inline constexpr size_t kQTRowMultiple = 2;  // of "raw "

// The rows of raw pictures of 24 bits. In many files each row is padded to a multiple of some
// bytes; in the engine the rows follow one another. All other pictures are left alone.
class PictureRows {
public:
    PictureRows() = default;
    // `multiple`: of bytes, in the file.
    PictureRows(const MediaFormat& format, size_t multiple);

    // Takes the padding out of a frame when its size says that it is there, and what comes behind
    // the picture. The size that is left.
    size_t Pack(std::span<uint8_t> frame) const;
    // The frame as it goes into a file; it is in `room` where it needs padding.
    std::span<const uint8_t> Pad(std::span<const uint8_t> frame, std::vector<uint8_t>& room) const;

private:
    size_t fRow = 0;     // bytes; 0: nothing is to be done
    size_t fPadded = 0;  // bytes of a row in the file
    size_t fRows = 0;
};

}  // namespace kelvane
