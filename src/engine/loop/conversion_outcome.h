#pragma once

#include <string>

#include "base/result.h"
#include "engine/loop/conversion_result.h"
#include "engine/loop/frame_loop.h"
#include "engine/loop/warnings.h"

namespace kelvane {

// Frames in a file as anybody would find them; 0 when it does not open.
uint64_t FramesIn(const std::string& path);

// Finishes the destination and tells what became of the run whose loop answered `run`: message,
// losses and counts. Only now is known what stands in the output.
Result<> ConcludeRun(const FrameLoop& loop, const Result<>& run, const OpenFiles& files,
                     ConversionResult& result);

}  // namespace kelvane
