#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvane {

// One source frame and what was made of it.
struct FrameSlot {
    std::vector<uint8_t> compressed;  // as read from the file
    std::vector<uint8_t> decoded;     // as 32-bit pixels in the source's geometry
    std::vector<uint8_t> resized;     // in the destination's geometry
    int64_t size = 0;                 // bytes read; 0 marks an empty slot
    bool valid = false;               // a read was tried
    bool is_decoded = false;          // `decoded` and `resized` hold this frame
    int64_t frame_number = 0;         // in the source, from 0
};

// The last four frames read. Time resampling looks one frame back and two ahead of the frame at
// the centre.
class FrameRing {
public:
    // `frameRoom`: most bytes of a frame as read.
    explicit FrameRing(size_t frameRoom);

    // The slot that the next frame goes to.
    FrameSlot& AtWrite() { return fSlots[fWrite]; }
    // Records the outcome of a read into that slot and moves on. `size` is 0 after a failure.
    void Filled(int64_t size, int64_t frameNumber);
    // The frame read last stands for this one as well.
    void Repeat(int64_t frameNumber);
    // The same for a turn that did not read: the ring runs dry in the right order.
    void MarkEmpty(int64_t frameNumber);

    // True before anything was read.
    bool IsFresh() const;
    // True when slots 0 to 2 are all empty: nothing more will come.
    bool IsDry() const;

    FrameSlot& Newest() { return Back(1); }
    FrameSlot& Next() { return Back(2); }
    FrameSlot& Current() { return Back(3); }
    FrameSlot& Previous() { return Back(4); }

private:
    FrameSlot& Back(size_t steps) { return fSlots[(fWrite + 4 - steps) % 4]; }
    void Advance() { fWrite = (fWrite + 1) % 4; }

    std::array<FrameSlot, 4> fSlots;
    size_t fWrite = 0;
};

}  // namespace kelvane
