#pragma once

#include <cstdint>

#include "engine/options/conversion_settings.h"

namespace kelvane {

// Source frames that are read before the first output frame is made: one more where fields change
// their order, for the frame before is looked at as well.
int64_t FramesToPrefill(const ConversionSettings& settings);

// Frames that a run over so many source frames will write.
uint64_t PlannedFrames(const ConversionSettings& settings, bool sourceIsPAL, bool destinationIsPAL,
                       uint64_t sourceFrames);

}  // namespace kelvane
