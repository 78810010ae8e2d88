#pragma once

#include "engine/options/conversion_settings.h"

namespace kelvane {

// How the pictures of a conversion go on in the source, taken evenly: output frame n shows source
// frame `begin` + n x `step`.
struct FilmPace {
    double step = 1;   // source frames
    double begin = 0;  // source frames
    // By how much faster than recorded the film runs: reverse pulldown makes 25 frames of what was
    // 29.97, in steps of 1.2.
    double speed = 1;
};

FilmPace PaceOf(const ConversionSettings& settings, bool sourceIsPAL, bool destinationIsPAL);

}  // namespace kelvane
