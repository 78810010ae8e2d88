#include "engine/timing/pulldown_plan.h"

namespace kelvane {

namespace {

using enum Neighbour;

constexpr int64_t kDropPeriod = 1000;  // output frames
constexpr int64_t kMixedPhase = 2;     // the one frame of each group with mixed fields

int64_t Modulo(int64_t value, int64_t divisor)
{
    return (value % divisor + divisor) % divisor;
}

// The neighbour whose frame number is congruent to what the phase wants, modulo 5.
Neighbour MainPicture(int64_t phase, int64_t number)
{
    static constexpr int64_t kWanted[6] = {0, 1, -1, 2, 3, 4};
    const int64_t wanted = kWanted[phase];
    if (Modulo(number, 5) == wanted) return kCurrent;
    if (Modulo(number - 1, 5) == wanted) return kPrevious;
    if (Modulo(number + 1, 5) == wanted) return kNext;
    return kCurrent;
}

Neighbour Forward(Neighbour picture)
{
    return picture == kPrevious ? kCurrent : picture == kCurrent ? kNext : kNewest;
}

ResamplingPlan PlanMixed(const ResamplingInput& in, const AlikeTest& alike, int64_t number,
                         bool swap)
{
    const bool early = Modulo(number, 5) == 2;
    const Neighbour first = early ? kPrevious : kCurrent;
    Neighbour second = early ? kCurrent : kNext;
    if (swap) second = Forward(second);
    if (!alike(first, second)) return Copy(first);
    return in.target_interlace == FieldTarget::kUpperFirst ? Weave(first, second)
                                                           : Weave(second, first);
}

// For a source with the upper field first, the first of two pictures gives the even lines.
ResamplingPlan WeaveBySource(const ResamplingInput& in, Neighbour first, Neighbour second)
{
    return in.source_interlace == FieldOrder::kUpperFirst ? Weave(first, second)
                                                          : Weave(second, first);
}

}  // namespace

bool PulldownDrops(int64_t output_index)
{
    return output_index > 0 && output_index % kDropPeriod == 0;
}

ResamplingPlan PlanPulldown(const ResamplingInput& in, const AlikeTest& alike)
{
    if (PulldownDrops(in.output_index)) {
        ResamplingPlan plan;
        plan.base = ResamplingPlan::kDrop;
        return plan;
    }
    const bool swap = FieldsSwap(in.source_interlace, in.target_interlace);
    const int64_t number = in.current_frame_number;
    const int64_t phase = in.output_index % 6;
    if (phase == kMixedPhase) return PlanMixed(in, alike, number, swap);
    const Neighbour main = MainPicture(phase, number);
    if (!swap) return Copy(main);
    const Neighbour with = main == kCurrent ? kNext : kCurrent;
    if (!alike(main, with)) return Copy(main);
    return WeaveBySource(in, with, main);
}

ResamplingPlan PlanReversePulldown(const ResamplingInput& in, const AlikeTest& alike)
{
    const bool swap = FieldsSwap(in.source_interlace, in.target_interlace);
    const int64_t phase = in.output_index % 5;
    if (phase < kMixedPhase) {
        if (!swap) return Copy(kCurrent);
        if (!alike(kCurrent, kPrevious)) return Copy(kPrevious);
        return WeaveBySource(in, kCurrent, kPrevious);
    }
    if (phase > kMixedPhase) {
        if (!swap) return Copy(kNext);
        // The two field orders fall back on different pictures; deliberate.
        if (!alike(kCurrent, kPrevious))
            return Copy(in.source_interlace == FieldOrder::kUpperFirst ? kCurrent : kPrevious);
        return WeaveBySource(in, kNext, kCurrent);
    }
    if (!swap) {
        if (!alike(kCurrent, kNext)) return Copy(kCurrent);
        return WeaveBySource(in, kCurrent, kNext);
    }
    Neighbour late = kNext, early = kPrevious;
    // Which pair is compared first depends on the field order; deliberate.
    const bool differ = in.source_interlace == FieldOrder::kUpperFirst
                            ? !alike(kNext, kPrevious)
                            : !alike(kCurrent, kPrevious);
    if (differ && alike(kNext, kCurrent))
        early = kCurrent;
    else if (differ)
        late = kPrevious;
    return WeaveBySource(in, late, early);
}

}  // namespace kelvane
