#pragma once

#include <cstdint>

#include "engine/options/conversion_settings.h"
#include "engine/timing/resampling_plan.h"
#include "engine/timing/time_position.h"

namespace kelvane {

// Plans the output frames of a run one by one: where each lies on the source's time axis, and how
// it is made.
class FramePlanner {
public:
    FramePlanner(const ConversionSettings& settings, bool sourceIsPAL, bool destinationIsPAL);

    // Number of the output frame that is planned next, dropped ones among them.
    int64_t Number() const { return fNumber; }
    // Source frames to read before it can be made; `fresh` when none was read yet.
    int64_t FramesToRead(bool fresh) const;
    // How it is made, with source frame `current` at the centre.
    ResamplingPlan Plan(int64_t current, const AlikeTest& alike);
    // How its fields follow each other.
    FieldOrder Order(int64_t current) const;
    // Goes on to the next one, after so many frames were read.
    void Advance(uint64_t framesRead);

private:
    ResamplingInput InputAt(int64_t current) const;

    const ConversionSettings& fSettings;
    Direction fDirection;
    TimePosition fTime;
    int64_t fNumber = 0;
};

}  // namespace kelvane
