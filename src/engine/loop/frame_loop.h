#pragma once

#include "base/status.h"
#include "engine/loop/conversion_run.h"

namespace kelvane {

inline constexpr char kVideoWriteError[] = "Write error in destination file (video track)!";
inline constexpr char kAudioWriteError[] = "Write error in destination file (audio track)!";

// Turns until the source ends, `progress` stops it or something fails, and finishes the sound. 0,
// or a negative Status with the reason in `run.message`.
Status RunFrameLoop(ConversionRun& run);

}  // namespace kelvane
