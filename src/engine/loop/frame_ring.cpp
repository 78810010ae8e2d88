#include "engine/loop/frame_ring.h"

#include <algorithm>

namespace kelvane {

FrameRing::FrameRing(size_t frameRoom)
{
    for (FrameSlot& slot : fSlots)
        slot.compressed.resize(frameRoom);
}

void FrameRing::Filled(int64_t size, int64_t frameNumber)
{
    FrameSlot& slot = AtWrite();
    slot.size = size;
    slot.valid = true;
    slot.is_decoded = false;
    slot.frame_number = frameNumber;
    Advance();
}

void FrameRing::Repeat(int64_t frameNumber)
{
    const FrameSlot& last = Newest();
    std::copy_n(last.compressed.begin(), last.size, AtWrite().compressed.begin());
    Filled(last.size, frameNumber);
}

void FrameRing::MarkEmpty(int64_t frameNumber)
{
    Filled(0, frameNumber);
    Newest().valid = false;
}

bool FrameRing::IsFresh() const
{
    return fWrite == 0 && !fSlots[0].valid && !fSlots[1].valid && !fSlots[2].valid;
}

bool FrameRing::IsDry() const
{
    return fSlots[0].size == 0 && fSlots[1].size == 0 && fSlots[2].size == 0;
}

}  // namespace kelvane
