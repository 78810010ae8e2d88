#pragma once

#include <cstdint>

#include "base/threads/worker_pool.h"
#include "picture/blend.h"

namespace kelvane {

// Bilinear interpolation of one output row of `count` 32-bit pixels, in 16.16 fixed point and
// rounded down. `source` points at the row above, of `pixels` pixels: beyond the last one it is
// repeated. `next` is the distance in bytes to the row below, `fraction` how far down towards it
// the output lies (16 bits; with 0 the row below is not read), `step` the advance for each output
// pixel.
void ScaleRow(const uint8_t* source, int32_t pixels, ptrdiff_t next, uint32_t fraction,
              uint8_t* destination, int32_t count, int32_t step);

// Scales a 32-bit picture with ScaleRow; the last line counts as its own next. The rows of the
// source may go on for `beyond` pixels to the right of its width, which interpolation looks at.
// Equal sizes are handed to BlendPictures with the weight, which counts for nothing else.
void ScalePicture(const PictureView& source, const PictureTarget& destination, int32_t weight,
                  int32_t beyond = 0, WorkerPool* pool = nullptr);

// The forms to check by eye; same bytes.
namespace plain {
void ScaleRow(const uint8_t* source, int32_t pixels, ptrdiff_t next, uint32_t fraction,
              uint8_t* destination, int32_t count, int32_t step);
void ScalePicture(const PictureView& source, const PictureTarget& destination, int32_t weight,
                  int32_t beyond = 0);
}  // namespace plain

}  // namespace kelvane
