#pragma once

#include "cli/arguments.h"
#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// Converts the files one after the other; a failure of one does not keep the others. Answers an
// ExitStatus.
int ConvertFiles(const Arguments& arguments, const CodecDrivers& drivers);

}  // namespace kelvane
