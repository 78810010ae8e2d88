#pragma once

#include <string>

namespace kelvane {

// One line about a movie for a list of files: "QuickTime DV PAL 4:2:0 (4:3 format)" and the like.
// There is a text in all cases; false when the file could not be opened or no path was given.
bool DescribeQuickTime(const char* path, std::string& text);

}  // namespace kelvane
