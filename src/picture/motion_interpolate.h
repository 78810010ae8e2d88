#pragma once

#include <cstdint>
#include <vector>

#include "base/threads/worker_pool.h"
#include "picture/block_match.h"

namespace kelvane {

// How small the blocks are that are followed. A number beyond either end counts as that end.
enum class MotionDetail : int32_t { kFine = 0, kMedium = 1, kCoarse = 2 };

// From a pixel to the matching place in the other picture.
struct MotionVector {
    int16_t dx, dy;
    bool operator==(const MotionVector&) const = default;
};

// One vector for each pixel of a picture, row by row.
using VectorField = std::vector<MotionVector>;

// What MotionInterpolate works in; kept by its owner so that nothing is allocated for a picture.
struct MotionState {
    VectorField a;                 // for each pixel of picture b: where it came from in a
    VectorField b;                 // for each pixel of picture a: where it goes to in b
    std::vector<uint8_t> written;  // 1 where the result has a pixel
};

// Makes the picture that lies at time `t` between a (0) and b (1): 32-bit pixels, rows without
// gaps. Below 0.05 it is a copy of a, above 0.95 one of b. Otherwise blocks of 32 pixels, refined
// to 16 and 8 by `detail`, are matched in both directions and pixels moved along their
// vectors and mixed; what no pixel reaches is a plain mix of both. With `interlaced` each field is
// interpolated by itself; of an odd height the last row is then left as it is. The destination is
// neither a nor b.
void MotionInterpolate(MotionState& state, const uint8_t* a, const uint8_t* b, int32_t width,
                       int32_t height, bool interlaced, uint8_t* destination, float t,
                       MotionDetail detail, WorkerPool* pool = nullptr);

// The form to check by eye; same bytes.
namespace plain {
void MotionInterpolate(MotionState& state, const uint8_t* a, const uint8_t* b, int32_t width,
                       int32_t height, bool interlaced, uint8_t* destination, float t,
                       MotionDetail detail);
}  // namespace plain

}  // namespace kelvane
