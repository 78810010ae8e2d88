#pragma once

#include <string>

#include "cli/arguments.h"

namespace kelvane {

// The output of one source: the file that was named, or one named after the source with the
// format's extension, in the chosen folder or beside the source.
std::string OutputPath(const Arguments& arguments, const std::string& source);

// True when both paths lead to one existing file, by any name or link.
bool IsSameFile(const std::string& a, const std::string& b);

}  // namespace kelvane
