#include "media/quicktime/structure/qt_picture_times.h"

#include <algorithm>
#include <limits>

#include "base/saturating.h"

namespace kelvane {

namespace {

// Beyond this the arithmetic would wrap; no film comes near.
constexpr double kMostQTFrames = 1e12;

// (value * factor + offset) / divisor, where only the product of a remainder has to fit.
uint64_t Scale(uint64_t value, uint64_t factor, uint64_t divisor, uint64_t offset)
{
    return value / divisor * factor + (value % divisor * factor + offset) / divisor;
}

}  // namespace

QTPictureTimes::QTPictureTimes(std::span<const QTTimeToSample> times, const QTFrameTime& frame,
                               uint64_t held)
    : fFrame(frame.ticks ? frame : QTFrameTime{1, 1}), fInFront(held)
{
    uint64_t tick = 0, start = 0;
    fRuns.reserve(times.size());
    for (const QTTimeToSample& entry : times) {
        Run run{fPictures, tick, frame.ticks ? entry.duration : 1, 0};
        tick = SaturatingAdd(tick, entry.count * run.duration);
        fPictures += entry.count;
        const double frames = double(tick) * double(fFrame.parts) / double(fFrame.ticks);
        run.end = frames > kMostQTFrames ? std::numeric_limits<uint64_t>::max() : FrameAt(tick);
        fRuns.push_back(run);
        if (frames > kMostQTFrames) return;
        // Pictures shorter than a frame have one frame at most, others have one at least.
        if (run.duration * fFrame.parts < fFrame.ticks) fLeftOut += entry.count - (run.end - start);
        start = run.end;
    }
}

// The frame that begins nearest to a tick.
uint64_t QTPictureTimes::FrameAt(uint64_t tick) const
{
    return Scale(tick, 2 * fFrame.parts, 2 * fFrame.ticks, fFrame.ticks);
}

// A picture that ends before this has no part of the frame.
uint64_t QTPictureTimes::FirstTickOf(uint64_t frame) const
{
    return Scale(2 * frame + 1, fFrame.ticks, 2 * fFrame.parts, 2 * fFrame.parts - 1);
}

uint64_t QTPictureTimes::Count() const
{
    const uint64_t own = fRuns.empty() ? 0 : fRuns.back().end;
    return own == 0 ? 0 : SaturatingAdd(own, fInFront);
}

QTPictureTimes::Place QTPictureTimes::At(uint64_t frame) const
{
    if (fInFront == 0) return PlaceOf(frame);
    Place place = PlaceOf(frame - std::min(frame, fInFront));
    if (frame > 0 && frame <= fInFront) place.held = true;
    return place;
}

QTPictureTimes::Place QTPictureTimes::PlaceOf(uint64_t frame) const
{
    const auto run = std::ranges::upper_bound(fRuns, frame, {}, &Run::end);
    if (run == fRuns.end() || run->duration == 0) return {};
    const uint64_t least = FirstTickOf(frame);
    const uint64_t within = least > run->tick ? (least - run->tick - 1) / run->duration : 0;
    return {run->picture + within, frame > FrameAt(run->tick + within * run->duration)};
}

}  // namespace kelvane
