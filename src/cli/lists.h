#pragma once

#include <string>
#include <vector>

#include "platform/codec_modules/codec_drivers.h"

namespace kelvane {

// The commands that only tell something; results go to standard output. Each answers an ExitStatus.
int ListFormats();
int ListCodecs(const CodecDrivers& drivers);
int DescribeFiles(const std::vector<std::string>& files);

}  // namespace kelvane
