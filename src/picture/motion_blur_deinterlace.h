#pragma once

#include <cstddef>
#include <cstdint>

#include "base/threads/worker_pool.h"

namespace kelvane {

// Softens the line pairs of a 32-bit picture where they differ, in place. Pairs are taken from the
// first line down, or from the last line up. Where the sum of the three colours' differences of a
// pixel in lines a and b is above the threshold, all four bytes become
//     a = (3 a + b) >> 2,   b = (3 a + 2 b + 3 c) >> 3
// with c the line after the pair; the last pair has no c, and both become (3 a + b) >> 2. A line
// left over stays.
void MotionBlurDeinterlace(uint8_t* picture, size_t pitch, int32_t width, int32_t height,
                           int32_t threshold, bool upwards, WorkerPool* pool = nullptr);

// The form to check by eye; same bytes.
namespace plain {
void MotionBlurDeinterlace(uint8_t* picture, size_t pitch, int32_t width, int32_t height,
                           int32_t threshold, bool upwards);
}  // namespace plain

}  // namespace kelvane
