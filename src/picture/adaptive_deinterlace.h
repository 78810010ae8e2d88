#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/threads/worker_pool.h"

namespace kelvane {

enum MotionMode : int32_t {
    kMovedSinceLastFrame = 0,
    kRebuildAll = 1,      // no test: every line of the other field is rebuilt
    kMovedAndCombed = 2,  // moved, and differs from the other field too
};

// What AdaptiveDeinterlace keeps between frames. Its owner may change the settings between
// AdaptiveDeinterlaceInit and a run.
struct DeinterlaceState {
    int32_t threshold = 15;         // a difference above it counts as motion
    int32_t scene_threshold = 100;  // percent of moving pixels from which all is rebuilt
    int32_t motion_mode = kMovedSinceLastFrame;
    int32_t compare_colours = 1;  // each of the three colours; 0: luma only
    int32_t width = 0, height = 0;
    // By the line numbers of the core, which count from the picture's second line when the field
    // flag is clear: pixels last compared against (or their luma), and 1 where a pixel moved.
    std::vector<uint32_t> previous;
    std::vector<uint8_t> moving;
};

// Makes the state anew for pictures of this size: settings as above, buffers zero.
void AdaptiveDeinterlaceInit(DeinterlaceState& state, int32_t width, int32_t height);
// Frees the buffers.
void AdaptiveDeinterlaceEnd(DeinterlaceState& state);

// Keeps one field of a 32-bit picture and rebuilds the lines of the other, in place, where they
// moved since the last frame: there a pixel becomes the mean of those above and below, each without
// its low bits, with a fourth byte of 0. With the field flag set the even lines are kept, else the
// odd ones. A state of another size is made anew; a zeroed history counts every bright pixel as
// moving.
void AdaptiveDeinterlace(DeinterlaceState& state, uint8_t* picture, size_t pitch, int32_t width,
                         int32_t height, bool keep_even, WorkerPool* pool = nullptr);

// The form to check by eye; same bytes.
namespace plain {
void AdaptiveDeinterlace(DeinterlaceState& state, uint8_t* picture, size_t pitch, int32_t width,
                         int32_t height, bool keep_even);
}  // namespace plain

}  // namespace kelvane
