#pragma once

#include "engine/timing/resampling_plan.h"

namespace kelvane {

// Plans that copy one picture, or weave two.
ResamplingPlan Copy(Neighbour picture);
ResamplingPlan Weave(Neighbour even, Neighbour odd);

// True when pulldown writes nothing for the output frame of this number: one in a thousand is
// dropped to come from 30 to 29.97 frames a second.
bool PulldownDrops(int64_t output_index);

// "2:3:3:2:2 Pulldown": six output frames of five source frames, or a plan that drops the frame.
ResamplingPlan PlanPulldown(const ResamplingInput& in, const AlikeTest& alike);
// Its reverse: five output frames of six source frames.
ResamplingPlan PlanReversePulldown(const ResamplingInput& in, const AlikeTest& alike);

}  // namespace kelvane
