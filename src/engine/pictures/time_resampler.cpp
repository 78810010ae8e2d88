#include "engine/pictures/time_resampler.h"

#include <cstring>

#include "picture/blend.h"
#include "picture/motion_blur_deinterlace.h"

namespace kelvane {

namespace {

constexpr int32_t kBlurThreshold = 16;

const uint8_t* At(const NeighbourPictures& pictures, Neighbour which)
{
    return pictures[static_cast<size_t>(which)];
}

}  // namespace

TimeResampler::TimeResampler(int32_t width, int32_t height, MotionDetail motionDetail,
                             ConversionState& state)
    : fWidth(width), fHeight(height), fMotionDetail(motionDetail), fState(state)
{
}

void TimeResampler::CopyOrWeave(const uint8_t* even, const uint8_t* odd, uint8_t* output) const
{
    const size_t row = static_cast<size_t>(fWidth) * 4, rows = static_cast<size_t>(fHeight);
    if (even == odd) {
        memcpy(output, even, row * rows);
        return;
    }
    // An odd last line belongs to neither field and stays as it was.
    for (size_t y = 0; y < rows / 2 * 2; y++)
        memcpy(output + y * row, (y % 2 ? odd : even) + y * row, row);
}

void TimeResampler::BlendLines(const ResamplingPlan::Blend& blend,
                               const NeighbourPictures& pictures, const uint8_t* main,
                               int32_t first, uint8_t* output)
{
    if (blend.weight == 0) return;
    const uint8_t* partner = At(pictures, blend.partner);
    if (partner == main) return;
    const ptrdiff_t row = ptrdiff_t{fWidth} * 4;
    BlendPictures(BlendMode::kWeight, blend.weight,
                  {partner + first * row, 2 * row, fWidth, fHeight / 2},
                  {output + first * row, 2 * row, fWidth, fHeight / 2}, &fState.pool);
}

// With a change of field order, the parity that comes second in the source is taken from one frame
// earlier on both sides. That is done on copies, which holds too when two of the pictures are one.
void TimeResampler::Interpolate(const ResamplingPlan& plan, const NeighbourPictures& pictures,
                                uint8_t* output)
{
    const uint8_t* a = At(pictures, Neighbour::kCurrent);
    const uint8_t* b = At(pictures, Neighbour::kNext);
    if (plan.shift_field) {
        const uint8_t* before = At(pictures, Neighbour::kPrevious);
        const size_t bytes = static_cast<size_t>(fWidth) * static_cast<size_t>(fHeight) * 4;
        for (auto& picture : fShifted)
            picture.resize(bytes);
        const bool odd = plan.shifted_parity == 1;
        CopyOrWeave(odd ? a : before, odd ? before : a, fShifted[0].data());
        CopyOrWeave(odd ? b : a, odd ? a : b, fShifted[1].data());
        a = fShifted[0].data();
        b = fShifted[1].data();
    }
    MotionInterpolate(fState.motion, a, b, fWidth, fHeight, plan.fields, output, plan.time,
                      fMotionDetail, &fState.pool);
}

void TimeResampler::Deinterlace(const ResamplingPlan& plan, uint8_t* output)
{
    const size_t pitch = static_cast<size_t>(fWidth) * 4;
    switch (plan.final_step) {
        case FinalStep::kNone:
            break;
        case FinalStep::kAdaptive:
            AdaptiveDeinterlace(fState.deinterlace, output, pitch, fWidth, fHeight, plan.sel != 0,
                                &fState.pool);
            break;
        case FinalStep::kBlur:
            MotionBlurDeinterlace(output, pitch, fWidth, fHeight, kBlurThreshold, plan.sel == 0,
                                  &fState.pool);
            break;
        case FinalStep::kFixedBlur:
            MotionBlurDeinterlace(output, pitch, fWidth, fHeight, kBlurThreshold, true,
                                  &fState.pool);
            break;
    }
}

void TimeResampler::Make(const ResamplingPlan& plan, const NeighbourPictures& pictures,
                         uint8_t* output)
{
    switch (plan.base) {
        case ResamplingPlan::kWeave: {
            const uint8_t *even = At(pictures, plan.even), *odd = At(pictures, plan.odd);
            CopyOrWeave(even, odd, output);
            BlendLines(plan.blend_even, pictures, even, 0, output);
            BlendLines(plan.blend_odd, pictures, odd, 1, output);
            break;
        }
        case ResamplingPlan::kMix: {
            CopyOrWeave(At(pictures, plan.even), At(pictures, plan.even), output);
            const ptrdiff_t row = ptrdiff_t{fWidth} * 4;
            BlendPictures(BlendMode::kWeight, plan.blend_all.weight,
                          {At(pictures, plan.blend_all.partner), row, fWidth, fHeight},
                          {output, row, fWidth, fHeight}, &fState.pool);
            break;
        }
        case ResamplingPlan::kInterpolate:
            Interpolate(plan, pictures, output);
            break;
        case ResamplingPlan::kNothing:
        case ResamplingPlan::kDrop:
            break;
    }
    Deinterlace(plan, output);
}

}  // namespace kelvane
