#pragma once

#include <string>

namespace kelvane {

// "DIF/DV PAL 4:2:0 (4:3 format)" and the like for the first frame of a raw DV file; empty when
// the file cannot be read.
std::string DescribeRawDV(const char* path);

}  // namespace kelvane
