#include "engine/sound/picture_pace.h"

namespace kelvane {

namespace {

constexpr double kRateNTSC = 30000 / 1001.0, kRatePAL = 25;  // frames a second
// Reverse pulldown: six frames give five, and one in each thousand read is passed over besides. In
// between pictures run ahead; this lies in the middle of where their fields are shown.
constexpr double kReverseStep = 1.2 / (1 - 1 / 1000.0);
constexpr double kReverseBegin = -0.45;

}  // namespace

PicturePace PaceOf(const ConversionSettings& settings, bool source_is_pal, bool destination_is_pal)
{
    const double source = source_is_pal ? kRatePAL : kRateNTSC;
    const double destination = destination_is_pal ? kRatePAL : kRateNTSC;
    const double recorded = source / destination;
    const bool reverse =
        settings.op == Operation::kToPAL && settings.timeresampling == ResamplingMethod::kPulldown;
    if (reverse) return {kReverseStep, kReverseBegin, kReverseStep / recorded};
    return {.step = recorded};
}

}  // namespace kelvane
