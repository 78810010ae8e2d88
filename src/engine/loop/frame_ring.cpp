#include "engine/loop/frame_ring.h"

#include <utility>

namespace kelvane {

FrameRing::FrameRing(size_t frameRoom) : fFrameRoom(frameRoom) {}

std::span<uint8_t> FrameRing::Room()
{
    FrameRef& oldest = fPlaces[fCount % kPlaces].frame;
    if (!fRoom && oldest.use_count() == 1) fRoom = std::move(oldest);
    if (!fRoom) fRoom = std::make_shared<SourceFrame>(fFrameRoom);
    fRoom->has_picture = false;
    return fRoom->bytes;
}

void FrameRing::Put(FrameRef frame, int64_t number, bool repeat)
{
    fPlaces[fCount++ % kPlaces] = {std::move(frame), number, repeat};
}

void FrameRing::Filled(size_t bytes, int64_t number)
{
    fRoom->size = bytes;
    Put(std::exchange(fRoom, nullptr), number);
}

void FrameRing::Repeat(int64_t number)
{
    Put(Back(1).frame, number, true);
}

void FrameRing::MarkEmpty(int64_t number)
{
    Put(nullptr, number);
}

bool FrameRing::IsDry() const
{
    return !fPlaces[0].frame && !fPlaces[1].frame && !fPlaces[2].frame;
}

NeighbourFrames FrameRing::Neighbours() const
{
    const auto given = [](const FrameRef& frame, const FrameRef& other) {
        return frame ? frame : other;
    };
    NeighbourFrames frames;
    const FrameRef& current = frames[Neighbour::kCurrent] = Current();
    frames[Neighbour::kPrevious] = given(Back(4).frame, current);
    const FrameRef& next = frames[Neighbour::kNext] = given(Back(2).frame, current);
    frames[Neighbour::kNewest] = given(Back(1).frame, next);
    return frames;
}

}  // namespace kelvane
