#pragma once

#include "cli/arguments.h"
#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// Makes a sample clip. Answers an ExitStatus.
int MakeSample(const SampleArguments& arguments, const CodecDrivers& drivers);

}  // namespace kelvane
