#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/timing/resampling_plan.h"

namespace kelvane {

// A frame of the source as it was read, and the picture that is made of it once. All that look at a
// frame share it; one that stands for the next as well is the same frame again.
struct SourceFrame {
    explicit SourceFrame(size_t room) : bytes(room) {}
    std::span<uint8_t> Bytes() { return std::span(bytes).first(size); }

    std::vector<uint8_t> bytes;
    size_t size = 0;               // bytes read
    std::vector<uint8_t> picture;  // 32-bit pixels in the destination's geometry, and a margin
    bool has_picture = false;
};
using FrameRef = std::shared_ptr<SourceFrame>;

// The frames around a position on the source's time axis, by Neighbour. Those that are not there
// have given way to those next to them.
class NeighbourFrames {
public:
    FrameRef& operator[](Neighbour which) { return fFrames[static_cast<size_t>(which)]; }
    const FrameRef& operator[](Neighbour which) const
    {
        return fFrames[static_cast<size_t>(which)];
    }

private:
    std::array<FrameRef, 4> fFrames;
};

}  // namespace kelvane
