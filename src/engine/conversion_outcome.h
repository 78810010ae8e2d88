#pragma once

#include <string>

#include "engine/conversion_run.h"

namespace kelvane {

// Finishes the destination and tells what became of the run whose loop answered `loop`: status,
// message, losses and counts. Only now is known what stands in the output, at `path`.
Status ConcludeRun(ConversionRun& run, Status loop, const std::string& path,
                   ConversionResult& result);

}  // namespace kelvane
