#include "engine/timing/planned_frames.h"

#include "engine/timing/pulldown_plan.h"
#include "engine/timing/time_position.h"

namespace kelvane {

namespace {

constexpr int64_t kPrefill = 3;
constexpr int64_t kPrefillForFieldSwap = 4;
constexpr int64_t kCentre = 3;  // the frame at the centre of the ring is the third newest

}  // namespace

int64_t FramesToPrefill(const ConversionSettings& settings)
{
    return FieldsSwap(settings.src_interlace, settings.dst_interlace) ? kPrefillForFieldSwap
                                                                      : kPrefill;
}

// The turns of the frame loop, without frames.
uint64_t PlannedFrames(const ConversionSettings& settings, bool sourceIsPAL, bool destinationIsPAL,
                       uint64_t sourceFrames)
{
    TimePosition time(settings, sourceIsPAL, destinationIsPAL);
    const bool drops = sourceIsPAL != destinationIsPAL && settings.op == Operation::kToNTSC &&
                       settings.timeresampling == ResamplingMethod::kPulldown;
    int64_t read = FramesToPrefill(settings);
    uint64_t written = 0;
    for (int64_t output = 0; read - kCentre < static_cast<int64_t>(sourceFrames); output++) {
        written += !(drops && PulldownDrops(output));
        time.Advance(output, static_cast<uint64_t>(read));
        read += time.FramesToRead();
    }
    return written;
}

}  // namespace kelvane
