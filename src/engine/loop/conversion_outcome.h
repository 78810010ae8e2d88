#pragma once

#include <string>

#include "engine/loop/conversion_result.h"
#include "engine/loop/conversion_run.h"

namespace kelvane {

// Frames in a file as anybody would find them; 0 when it does not open.
uint64_t FramesIn(const std::string& path);

// Finishes the destination and tells what became of the run whose loop answered `loop`: status,
// message, losses and counts. Only now is known what stands in the output, at `path`.
Status ConcludeRun(ConversionRun& run, Status loop, const std::string& path,
                   ConversionResult& result);

}  // namespace kelvane
