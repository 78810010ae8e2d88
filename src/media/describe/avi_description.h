#pragma once

#include <string>

namespace kelvane {

// True when the file begins as an AVI does, "RIFF" size "AVI ".
bool IsAVIFile(const char* path);

// One line about a file for a list of files, such as "AVI Type-2 DV (Microsoft) PAL 4:2:0 (4:3
// format)". True when it could be made; the text is set in all cases.
bool DescribeAVI(const char* path, std::string& text);

}  // namespace kelvane
