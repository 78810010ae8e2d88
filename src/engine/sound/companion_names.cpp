#include "engine/sound/companion_names.h"

#include <algorithm>
#include <utility>

namespace kelvane {

namespace {

// Endings put in place of the extension; the counter is this many characters from the end.
struct Ending {
    const char* text;
    size_t counter_from_end;
};
// The first three stand for a single file: their counters lead to names like ".wbv", which nobody
// uses. Deliberate.
constexpr Ending kEndings[] = {
    {".wav", 2},    {".aif", 2},    {".aiff", 2},   {"_1.wav", 5}, {"_1.aif", 5},
    {"_1.aiff", 6}, {"_A1.wav", 5}, {"#01.wav", 5}, {"#1.wav", 5},
};

size_t DotOf(const std::string& path)
{
    return std::min(path.rfind('.'), path.size());
}

// The character at `at` becomes "A" and the extension "wav".
std::string AudioTwin(std::string path, size_t at)
{
    path[at] = 'A';
    return path.substr(0, DotOf(path)) + ".wav";
}

// The first of two texts that the path holds; npos when it holds neither.
size_t FindEither(const std::string& path, const char* first, const char* second)
{
    const size_t at = path.find(first);
    return at != std::string::npos ? at : path.find(second);
}

}  // namespace

std::vector<CompanionName> CompanionNames(const std::string& source_path)
{
    std::vector<CompanionName> names;
    const size_t dot = DotOf(source_path);
    const std::string stem = source_path.substr(0, dot);
    if (stem.ends_with(" V0")) names.push_back({AudioTwin(source_path, dot - 2), dot - 1});
    for (const Ending& ending : kEndings) {
        std::string path = stem + ending.text;
        const size_t counter = path.size() - ending.counter_from_end;
        names.push_back({std::move(path), counter});
    }
    if (const size_t at = FindEither(source_path, ".v1", ".V1"); at != std::string::npos)
        names.push_back({AudioTwin(source_path, at + 1), at + 1});
    // From A01 the counter goes to A11, A21 and A31. Deliberate.
    if (const size_t at = FindEither(source_path, "v01.", "V01."); at != std::string::npos)
        names.push_back({AudioTwin(source_path, at), at + 1});
    return names;
}

CompanionName GivenCompanion(const std::string& path)
{
    const size_t dot = DotOf(path);
    return {path, dot > 0 ? dot - 1 : std::string::npos};
}

void NextChannel(CompanionName& name)
{
    if (name.counter < name.path.size()) name.path[name.counter]++;
}

}  // namespace kelvane
