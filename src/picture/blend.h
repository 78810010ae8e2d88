#pragma once

#include <cstddef>
#include <cstdint>

#include "base/threads/worker_pool.h"

namespace kelvane {

enum class BlendMode {
    kWeight = 0,       // the general weight for all pixels
    kSourceAlpha = 1,  // the fourth byte of each source pixel, times the general weight
};

inline constexpr int32_t kFullWeight = 255;  // of BlendPictures: the source as it stands

// A 32-bit picture that is read, and one that is written: `width` pixels a row, rows `pitch` bytes
// apart.
struct PictureView {
    const uint8_t* pixels;
    ptrdiff_t pitch;
    int32_t width;
    int32_t height;
};
struct PictureTarget {
    uint8_t* pixels;
    ptrdiff_t pitch;
    int32_t width;
    int32_t height;
};

// Mixes the source into the destination over the smaller of the two sizes: each byte, the fourth
// too, becomes d + ((s - d) * w >> 8), with the product taken in full. `weight` is w, limited to 0
// to 255. By weight a full weight copies; by alpha it makes w the alpha itself, any other weight
// makes it alpha * weight >> 8.
void BlendPictures(BlendMode mode, int32_t weight, const PictureView& source,
                   const PictureTarget& destination, WorkerPool* pool = nullptr);

// Sum of the absolute differences of bytes 0 to 2 of each 32-bit word, modulo 2^32.
uint32_t PictureDifference(const uint8_t* a, const uint8_t* b, size_t words,
                           WorkerPool* pool = nullptr);

// Mixes `bytes` bytes of two runs: out = d + ((s - d) * weight >> 8), weight from 0 to 256. The
// output may be one of the inputs.
void BlendRun(const uint8_t* d, const uint8_t* s, uint32_t weight, uint8_t* out, size_t bytes);

// The forms to check by eye; same results.
namespace plain {
void BlendPictures(BlendMode mode, int32_t weight, const PictureView& source,
                   const PictureTarget& destination);
uint32_t PictureDifference(const uint8_t* a, const uint8_t* b, size_t words);
}  // namespace plain

}  // namespace kelvane
