#pragma once

#include <cstdint>
#include <string>

namespace kelvane {

// What a source file is, by its contents.
enum SourceKind : int32_t {
    kUnknownSource = 0,
    kAVISource = 1,
    kQuickTimeSource = 2,
    kWAVSource = 3,
    kAIFFSource = 4,
    kRawDVSource = 5,
    kES3Source = 6,
    kDU1Source = 7,
    kOMFSource = 9,
};

// Asks each file class in a fixed order; the first that knows the file ends the search.
SourceKind DetectFileType(const std::string& path);

// One line about a file, as a list of files shows it. False when the file cannot be described; the
// text then says so.
bool DescribeFile(const std::string& path, std::string& text);

}  // namespace kelvane
