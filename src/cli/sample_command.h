#pragma once

#include "cli/arguments.h"
#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// Makes a sample clip. `overwrite`: whether one that exists is replaced, as OverwriteQuestion has
// it. Answers an ExitStatus.
int MakeSample(const SampleArguments& arguments, int32_t overwrite, const CodecDrivers& drivers);

}  // namespace kelvane
