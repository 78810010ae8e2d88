#pragma once

#include <cstdint>

namespace kelvane {

// How many samples of a channel go with each output frame. A PAL frame lasts a whole number of
// samples; for NTSC, at 30000/1001 frames a second, two steps of different periods add up to the
// right mean (1601.6 at 48 kHz, to within 3 samples in a thousand frames).
struct SampleCadence {
    uint32_t base = 0;  // 0 until a rate is known
    uint32_t period1 = 1, add1 = 0;
    uint32_t period2 = 1, add2 = 0;

    // Samples that go with output frame `frame`, counted from 0; 0 until a rate is known. Both
    // steps can fall on one frame, as on the first.
    uint32_t Count(uint64_t frame) const
    {
        return base + (frame % period1 == 0 ? add1 : 0) + (frame % period2 == 0 ? add2 : 0);
    }
};

// `pal` is the destination's system. Without sound (base 0) for a rate that is not known.
SampleCadence CadenceFor(uint32_t rate, bool pal);

// Seconds that a frame of a system lasts.
constexpr double FrameSeconds(bool pal)
{
    return pal ? 1 / 25.0 : 1001 / 30000.0;
}

// Samples of a channel that `frames` frames of a system last, to the last whole one.
constexpr uint64_t SamplesOfFrames(uint64_t frames, uint32_t rate, bool pal)
{
    return pal ? frames * rate / 25 : frames * rate * 1001 / 30000;
}

}  // namespace kelvane
