#pragma once

#include "base/status.h"
#include "engine/loop/conversion_run.h"

namespace kelvane {

// Makes the output frame of this turn from the pictures in the ring: decodes what is not decoded
// yet, brings it to the destination's geometry, resamples in time and encodes. The frame is in
// run.encoder then, unless it was dropped. 0, or a negative Status with the reason in
// `run.message`.
Status Reencode(ConversionRun& run, bool& dropped);

}  // namespace kelvane
