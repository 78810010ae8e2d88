#pragma once

#include "engine/options/conversion_settings.h"

namespace kelvane {

// Where the pictures of a conversion lie in the source, taken evenly: output frame n shows source
// frame `begin` + n x `step`.
struct PicturePace {
    double step = 1;   // source frames
    double begin = 0;  // source frames
    // By how much faster than recorded they run: reverse pulldown makes 25 frames of what
    // was 29.97, in steps of 1.2.
    double speed = 1;
};

PicturePace PaceOf(const ConversionSettings& settings, bool source_is_pal, bool destination_is_pal);

}  // namespace kelvane
