#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "engine/pictures/conversion_state.h"
#include "engine/timing/resampling_plan.h"

namespace kelvane {

// The pictures around a position on the source's time axis, by Neighbour; those that a plan does
// not look at may be null.
using NeighbourPictures = std::array<const uint8_t*, 4>;

// Carries out a resampling plan on 32-bit pictures of the destination's size.
class TimeResampler {
public:
    TimeResampler(int32_t width, int32_t height, MotionDetail motionDetail, ConversionState& state);

    // Makes the output picture. Not for a plan that drops the frame.
    void Make(const ResamplingPlan& plan, const NeighbourPictures& pictures, uint8_t* output);

private:
    void CopyOrWeave(const uint8_t* even, const uint8_t* odd, uint8_t* output) const;
    void BlendLines(const ResamplingPlan::Blend& blend, const NeighbourPictures& pictures,
                    const uint8_t* main, int32_t first, uint8_t* output);
    void Interpolate(const ResamplingPlan& plan, const NeighbourPictures& pictures,
                     uint8_t* output);
    void Deinterlace(const ResamplingPlan& plan, uint8_t* output);

    int32_t fWidth, fHeight;
    MotionDetail fMotionDetail;
    ConversionState& fState;
    std::array<std::vector<uint8_t>, 2> fShifted;  // pictures with one field of a frame earlier
};

}  // namespace kelvane
