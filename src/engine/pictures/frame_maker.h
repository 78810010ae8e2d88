#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/result.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "engine/pictures/conversion_state.h"
#include "engine/pictures/picture_encoder.h"
#include "engine/pictures/source_frame.h"
#include "engine/pictures/time_resampler.h"
#include "format/media_format.h"

namespace kelvane {

// One output frame to be made: of which pictures, and how. Those that the plan looks at are there.
struct FrameJob {
    ResamplingPlan plan;
    NeighbourFrames frames;
    FieldOrder order;  // of its fields
    bool dvcpro;       // which kind of DV is wanted
};

// Makes output frames: composes their pictures and encodes them. In the order of the film, for
// deinterlacer and codecs can have a history.
class FrameMaker {
public:
    FrameMaker(const MediaFormat& format, bool pal, MotionDetail motionDetail,
               ConversionState& state);

    Result<> Make(const FrameJob& job);
    // The frame made last; may be edited in place. Empty when its codec gave nothing.
    std::span<uint8_t> Frame() { return fEncoder.Frame(); }
    // What its codec wants stored beside the frames; known after the first one.
    std::vector<uint8_t> StreamHeader() const { return fEncoder.StreamHeader(); }

private:
    // The frames that a picture takes its lines from.
    struct Woven {
        FrameRef even, odd;
        bool operator==(const Woven&) const = default;
    };

    bool IsAgain(const FrameJob& job);
    void DeclareFieldOrder(FieldOrder order);

    const MediaFormat& fFormat;
    PictureEncoder fEncoder;
    TimeResampler fResampler;
    std::vector<uint8_t> fPicture;
    Woven fWoven;  // what the picture is when it is nothing more; else null
    DIFFrame fFrame;
};

}  // namespace kelvane
