#include "engine/timing/time_position.h"

#include <cmath>

namespace kelvane {

namespace {

constexpr double kStepToNTSC = 0.8341675008341676;  // 25 / 29.97
constexpr double kStepToPAL = 1.1987999999999999;   // 29.97 / 25
constexpr double kStepPulldown = 25.0 / 30;  // exact; the frames that it drops make up for it
constexpr double kStepReversePulldown = 1.2;
constexpr double kSkipPeriod = 1000.0;
constexpr double kSlack = 0.00001;  // keeps 5.9999999 from counting as 5
constexpr double kFold = 10.0;      // keeps the fraction exact over long files

}  // namespace

TimePosition::TimePosition(const ConversionSettings& settings, bool sourceIsPAL,
                           bool destinationIsPAL)
{
    const bool pulldown = settings.timeresampling == ResamplingMethod::kPulldown;
    if (sourceIsPAL != destinationIsPAL) {
        if (settings.op == Operation::kToNTSC) fStep = pulldown ? kStepPulldown : kStepToNTSC;
        if (settings.op == Operation::kToPAL) fStep = kStepToPAL;
    }
    // After the rule for equal standards, so that it overrides it; deliberate.
    if (settings.op == Operation::kToPAL && pulldown) {
        fStep = kStepReversePulldown;
        fSkips = true;
        fNextSkip = kSkipPeriod;
    }
    fRepeatsFirst = settings.op == Operation::kToNTSC && pulldown &&
                    FieldsSwap(settings.src_interlace, settings.dst_interlace);
}

int64_t TimePosition::FramesToRead() const
{
    return static_cast<int64_t>(std::floor(fPosition + kSlack) - std::floor(fPrevious + kSlack));
}

void TimePosition::Advance(int64_t outputIndex, uint64_t framesRead)
{
    fPrevious = fPosition;
    fPosition += fStep;
    if (outputIndex == 0 && fRepeatsFirst) fPosition -= fStep;
    if (fSkips && static_cast<int64_t>(framesRead) > static_cast<int64_t>(fNextSkip)) {
        fPosition += 1.0;
        fNextSkip += kSkipPeriod;
    }
    if (fPrevious > kFold) {
        fPrevious -= kFold;
        fPosition -= kFold;
    }
}

}  // namespace kelvane
