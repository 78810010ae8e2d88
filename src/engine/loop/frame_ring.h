#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/pictures/source_frame.h"

namespace kelvane {

// The last four frames read. Time resampling looks one frame back and two ahead of the frame at
// the centre.
class FrameRing {
public:
    // `frameRoom`: most bytes of a frame as read.
    explicit FrameRing(size_t frameRoom);

    // Where the next frame is to be read to: the room of the oldest, when nobody else looks at it.
    std::span<uint8_t> Room();
    // So many bytes were read there: frame `number` of the source.
    void Filled(size_t bytes, int64_t number);
    // The frame read last stands for this one as well.
    void Repeat(int64_t number);
    // A turn that did not read: the ring runs dry in the right order.
    void MarkEmpty(int64_t number);

    // True before the first of these.
    bool IsFresh() const { return fCount == 0; }
    // True when places 0 to 2 are all empty: nothing more will come.
    bool IsDry() const;

    // The frame at the centre, null for an empty place, and its number.
    const FrameRef& Current() const { return Back(3).frame; }
    int64_t CurrentNumber() const { return Back(3).number; }
    // True when it is there a second time, for one that could not be had.
    bool CurrentIsRepeat() const { return Back(3).repeat; }
    // The frames around it. Only while it is there.
    NeighbourFrames Neighbours() const;

private:
    static constexpr size_t kPlaces = 4;
    struct Place {
        FrameRef frame;  // null: empty
        int64_t number = 0;
        bool repeat = false;
    };

    const Place& Back(size_t steps) const { return fPlaces[(fCount + kPlaces - steps) % kPlaces]; }
    void Put(FrameRef frame, int64_t number, bool repeat = false);

    size_t fFrameRoom;
    std::array<Place, kPlaces> fPlaces;
    size_t fCount = 0;
    FrameRef fRoom;
};

}  // namespace kelvane
