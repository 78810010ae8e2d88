#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/pictures/conversion_state.h"
#include "engine/timing/resampling_plan.h"

namespace kelvane {

// Carries out a resampling plan on 32-bit pictures of the destination's size.
class TimeResampler {
public:
    TimeResampler(int32_t width, int32_t height, MotionDetail motionDetail, ConversionState& state);

    // Gives the picture of a neighbour; called only for those that are needed.
    using PictureOf = std::function<const uint8_t*(Neighbour)>;

    // Begins a turn: forgets which pictures were found alike.
    void BeginTurn(PictureOf pictureOf);
    // The scene test: less than 60000001 of difference over all pixels.
    bool Alike(Neighbour a, Neighbour b);
    // Makes the output picture. Not for a plan that drops the frame.
    void Make(const ResamplingPlan& plan, uint8_t* output);

private:
    void CopyOrWeave(const uint8_t* even, const uint8_t* odd, uint8_t* output) const;
    void BlendLines(const ResamplingPlan::Blend& blend, const uint8_t* main, int32_t first,
                    uint8_t* output);
    void Interpolate(const ResamplingPlan& plan, uint8_t* output);
    void Deinterlace(const ResamplingPlan& plan, uint8_t* output);

    int32_t fWidth, fHeight;
    MotionDetail fMotionDetail;
    ConversionState& fState;
    PictureOf fPictureOf;
    struct Comparison {
        const uint8_t *a, *b;
        bool alike;
    };
    std::vector<Comparison> fCompared;             // this turn
    std::array<std::vector<uint8_t>, 2> fShifted;  // pictures with one field of a frame earlier
};

}  // namespace kelvane
