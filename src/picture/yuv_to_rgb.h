#pragma once

#include <cstdint>

#include "base/threads/worker_pool.h"
#include "format/media_format.h"

namespace kelvane {

// From kYUY2 or kUYVY (8-bit studio range, ITU-R BT.601, pairs of two pixels) to kBGRX32 with a
// fourth byte of 0, or to kBGR24. The chroma of an odd pixel is the mean of its pair's and the next
// pair's, where the picture is one run of pairs: the last pair of a row looks into the next row.
// After every `width` pairs, so at the end of every second row, and at the end of the picture the
// next pair counts as zero bytes, which is deliberate: the contract is the run, not the row. An odd
// last pixel reads its half of the pair; the other half counts as zero.
//
// To kBGR24 only the even pixel of each pair is written, as B, G, R, 0, 0, 0 at steps of eight
// bytes; the two bytes between are left. Deliberate: both forms fill 4 * width * height bytes.
void YuvToRgb(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height, WorkerPool* pool = nullptr);

// From kYUVSigned to kBGRX32 with a fourth byte of 0xFF, or to kBGR24 (three bytes a pixel). The
// chroma of an odd pixel is the mean of its pair's and the next pair's in the row; the last pair of
// a row has only its own. With an odd width the last pixel of a row reads the chroma that is not
// in its half of the pair from the two bytes behind it, which count as zero behind the picture.
void YuvSignedToRgb(const uint8_t* source, uint8_t* destination, ColourSpace to, int32_t width,
                    int32_t height, WorkerPool* pool = nullptr);

// The forms to check by eye; same bytes.
namespace plain {
void YuvToRgb(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height);
void YuvSignedToRgb(const uint8_t* source, uint8_t* destination, ColourSpace to, int32_t width,
                    int32_t height);
}  // namespace plain

}  // namespace kelvane
