#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kelvane {

// A file that may hold the sound of a clip, and how the names of its other channels follow.
struct CompanionName {
    std::string path;
    // Place of the character that counts channels; npos when the path cannot count.
    size_t counter = std::string::npos;
};

// The names, in the order of trying, under which editing systems leave the sound of a clip beside
// it. The dot of the extension is the last one in the path, or the end of the path.
std::vector<CompanionName> CompanionNames(const std::string& source_path);

// A file named by the user: the character before its dot counts channels.
CompanionName GivenCompanion(const std::string& path);

// The name of the next channel's file: the counter goes up by one.
void NextChannel(CompanionName& name);

}  // namespace kelvane
