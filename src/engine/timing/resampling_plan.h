#pragma once

#include <cstdint>
#include <functional>

#include "base/television.h"
#include "engine/options/conversion_choices.h"

namespace kelvane {

// The neighbours of the position on the source's time axis. Several can be the same picture at the
// two ends of a file.
enum class Neighbour { kPrevious, kCurrent, kNext, kNewest };

// From the source's television standard to the destination's.
enum class Direction { kSameStandard, kToNTSC, kToPAL };

// What the decision looks at. Positions are in source frames.
struct ResamplingInput {
    double position = 0;
    double step = 1;  // source frames an output frame
    ResamplingMethod method = ResamplingMethod::kNearest;
    FieldOrder source_interlace = FieldOrder::kProgressive;
    FieldTarget target_interlace = FieldTarget::kAsSource;
    bool allow_field_order_change = false;
    Direction direction = Direction::kSameStandard;
    int64_t output_index = 0;
    int64_t current_frame_number = 0;
};

// True when two pictures show the same scene. Asked only where it matters, for it costs a pass over
// both.
using AlikeTest = std::function<bool(Neighbour, Neighbour)>;

enum class FinalStep { kNone, kAdaptive, kBlur, kFixedBlur };

// How to make one output picture.
struct ResamplingPlan {
    enum Base {
        kNothing,      // the output picture keeps what it held
        kDrop,         // no frame is written
        kWeave,        // even lines from one picture, odd lines from another
        kMix,          // `even` whole, mixed with `blend_all`
        kInterpolate,  // by motion between the current and the next picture
    };
    // Lines of the base mixed with those of a partner.
    struct Blend {
        Neighbour partner;
        int32_t weight = 0;  // of the partner, 0 to 255; 0: no blend
    };

    // True when the picture of that neighbour goes into this one.
    bool LooksAt(Neighbour which) const;
    // True when the picture is lines of frames as they are, and nothing more.
    bool OnlyWeaves() const
    {
        return base == kWeave && blend_even.weight == 0 && blend_odd.weight == 0 &&
               final_step == FinalStep::kNone;
    }

    Base base = kNothing;
    Neighbour even = Neighbour::kCurrent, odd = Neighbour::kCurrent;  // the same: a copy
    Blend blend_even{}, blend_odd{}, blend_all{};
    bool fields = false;         // interpolate each field by itself
    bool shift_field = false;    // one field is taken from one frame earlier on both sides
    int32_t shifted_parity = 0;  // its lines: 0 even, 1 odd
    float time = 0;              // between the two pictures
    int32_t sel = 1;             // which field the final step keeps
    FinalStep final_step = FinalStep::kNone;
};

// Decides how to make the output picture at a position.
ResamplingPlan DecideResampling(const ResamplingInput& input, const AlikeTest& alike);

// How the two fields of the output pictures follow each other.
FieldOrder OutputFieldOrder(const ResamplingInput& input);

}  // namespace kelvane
