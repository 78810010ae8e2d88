#include "engine/loop/frame_ring.h"

#include <utility>

namespace kelvane {

FrameRing::FrameRing(size_t frameRoom)
    : fFrameRoom(frameRoom), fSpare(std::make_shared<SourceFrame>(frameRoom))
{
}

void FrameRing::Put(FrameRef frame, int64_t number)
{
    Place& place = fPlaces[fCount++ % kPlaces];
    const FrameRef last = std::exchange(place.frame, std::move(frame));
    place.number = number;
    if (fSpare) return;
    // A frame that nobody looks at any more gives its room.
    fSpare = last.use_count() == 1 ? last : std::make_shared<SourceFrame>(fFrameRoom);
    fSpare->has_picture = false;
}

void FrameRing::Filled(size_t bytes, int64_t number)
{
    fSpare->size = bytes;
    Put(std::exchange(fSpare, nullptr), number);
}

void FrameRing::Repeat(int64_t number)
{
    Put(Back(1).frame, number);
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
