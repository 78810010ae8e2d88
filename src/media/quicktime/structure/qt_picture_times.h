#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "media/quicktime/structure/qt_sample_tables.h"

namespace kelvane {

// The time that one frame of a film lasts: `ticks` / `parts` of the ticks of the media's clock. No
// ticks: every picture is one frame, however long it stands.
struct QTFrameTime {
    uint64_t ticks = 0;
    uint64_t parts = 1;  // up to 2^16
};

// Which pictures of a track stand for the frames of a film of constant rate. Pictures of a movie
// have durations of their own: each stands until its end, rounded to frames. One that stands for
// several is shown by the first and held by the others; one that ends before it gets a frame is
// left out.
class QTPictureTimes {
public:
    struct Place {
        uint64_t picture = 0;  // from 0
        bool held = false;     // by a frame behind its first
    };

    QTPictureTimes() = default;
    // The first picture stands for `held` frames in front of its own.
    QTPictureTimes(std::span<const QTTimeToSample> times, const QTFrameTime& frame,
                   uint64_t held = 0);

    // Frames in all. Of more than any film has, the largest number.
    uint64_t Count() const;
    // Frames that hold a picture, and pictures without a frame.
    uint64_t Held() const { return Count() - (fPictures - fLeftOut); }
    uint64_t LeftOut() const { return fLeftOut; }
    // Of a frame below Count(). Logarithmic in the number of different durations in a row.
    Place At(uint64_t frame) const;

private:
    // Pictures of one duration.
    struct Run {
        uint64_t picture;   // the first
        uint64_t tick;      // when it begins
        uint64_t duration;  // of each
        uint64_t end;       // frame behind the last
    };

    uint64_t FrameAt(uint64_t tick) const;
    uint64_t FirstTickOf(uint64_t frame) const;
    Place PlaceOf(uint64_t frame) const;

    QTFrameTime fFrame;
    uint64_t fInFront = 0;  // frames before the first of the runs
    std::vector<Run> fRuns;
    uint64_t fPictures = 0;
    uint64_t fLeftOut = 0;
};

}  // namespace kelvane
