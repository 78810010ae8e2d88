#include "engine/timing/frame_planner.h"

#include "engine/timing/planned_frames.h"

namespace kelvane {

namespace {

Direction DirectionOf(const ConversionSettings& settings, bool same)
{
    if (same) return Direction::kSameStandard;
    return settings.op == Operation::kToNTSC ? Direction::kToNTSC : Direction::kToPAL;
}

}  // namespace

FramePlanner::FramePlanner(const ConversionSettings& settings, bool sourceIsPAL,
                           bool destinationIsPAL)
    : fSettings(settings),
      fDirection(DirectionOf(settings, sourceIsPAL == destinationIsPAL)),
      fTime(settings, sourceIsPAL, destinationIsPAL)
{
}

int64_t FramePlanner::FramesToRead(bool fresh) const
{
    const int64_t count = fTime.FramesToRead();
    return count == 0 && fresh ? FramesToPrefill(fSettings) : count;
}

ResamplingInput FramePlanner::InputAt(int64_t current) const
{
    ResamplingInput in;
    in.position = fTime.Position();
    in.step = fTime.Step();
    in.method = fSettings.timeresampling;
    in.source_interlace = fSettings.src_interlace;
    in.target_interlace = fSettings.dst_interlace;
    in.allow_field_order_change = fSettings.conversion_options & kOptionFieldOrderChange;
    in.direction = fDirection;
    in.output_index = fNumber;
    in.current_frame_number = current;
    return in;
}

ResamplingPlan FramePlanner::Plan(int64_t current, const AlikeTest& alike)
{
    return DecideResampling(InputAt(current), alike);
}

FieldOrder FramePlanner::Order(int64_t current) const
{
    return OutputFieldOrder(InputAt(current));
}

void FramePlanner::Advance(uint64_t framesRead)
{
    fTime.Advance(fNumber, framesRead);
    fNumber++;
}

}  // namespace kelvane
