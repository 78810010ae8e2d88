#include "media/quicktime/reader/qt_references.h"

#include <algorithm>
#include <string_view>

#include "base/byte_cursor.h"

namespace kelvane {

namespace {

constexpr std::string_view kSeparators = ":/\\";

bool IsPathCharacter(uint8_t c)
{
    constexpr std::string_view kMarks = ":./\\_-~$ %'`";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kMarks.find(static_cast<char>(c)) != std::string_view::npos;
}

void SetName(std::vector<std::string>& names, size_t place, std::string name)
{
    if (place >= kMaxQTExternalFiles || name.empty()) return;
    if (names.size() <= place) names.resize(place + 1);
    names[place] = std::move(name);
}

// The record around one "RU*A" at `mark`: length 2 bytes before, data reference number 6 behind,
// text from 16 behind to 4 before the end that the length gives.
void TakeRecord(std::span<const uint8_t> code, size_t mark, std::vector<std::string>& names)
{
    constexpr size_t kNumber = 6, kText = 16, kTail = 4;
    if (mark < 2 || mark + kText > code.size()) return;
    const auto number = LoadBytes(code.subspan(mark + kNumber, 2), ByteOrder::kBig);
    const size_t length = LoadBytes(code.subspan(mark - 2, 2), ByteOrder::kBig);
    const size_t end = std::min(mark + length, code.size() + kTail);
    if (number == 0 || end < mark + kText + kTail) return;
    const auto text = code.subspan(mark + kText, end - kTail - mark - kText);
    SetName(names, number - 1, std::string(text.begin(), std::ranges::find(text, uint8_t{0})));
}

// "\\SERVERLS\share" is "\\SERVER\share": servers of edit systems carry the two letters for the
// Macintosh side only.
std::string WithoutServerSuffix(std::string name)
{
    const size_t end = std::min(name.find('\\', 2), name.size());
    if (name.starts_with("\\\\") && end >= 4 && name.compare(end - 2, 2, "LS") == 0)
        name.erase(end - 2, 2);
    return name;
}

}  // namespace

void FindNamesInCode(std::span<const uint8_t> code, std::vector<std::string>& names)
{
    constexpr size_t kTooLarge = 4000;
    constexpr uint8_t kMark[] = {'R', 'U', '*', 'A'};
    if (code.size() >= kTooLarge || names.size() >= kMaxQTExternalFiles) return;
    auto at = code.begin();
    while ((at = std::search(at, code.end(), std::begin(kMark), std::end(kMark))) != code.end())
        TakeRecord(code, static_cast<size_t>(at++ - code.begin()), names);
}

std::string FindPathInAlias(std::span<const uint8_t> alias)
{
    constexpr size_t kShortestAlias = 13, kShortestPath = 9;
    if (alias.size() < kShortestAlias) return {};
    const std::string_view bytes(reinterpret_cast<const char*>(alias.data()), alias.size());
    for (size_t end = bytes.size(); end > 0;) {
        size_t start = end;
        while (start > 0 && IsPathCharacter(alias[start - 1]))
            start--;
        const std::string_view run = bytes.substr(start, end - start);
        if (run.size() >= kShortestPath && run.find_first_of(kSeparators) != run.npos) {
            // The length byte of a Pascal string may itself be a path character.
            const bool counted = static_cast<uint8_t>(run[0]) == run.size() - 1;
            return std::string(run.substr(counted ? 1 : 0));
        }
        end = start > 0 ? start - 1 : 0;
    }
    return {};
}

void FindNamesInReferences(const std::vector<QTDataReference>& references,
                           std::vector<std::string>& names)
{
    for (size_t i = 0; i < references.size(); i++)
        if (!references[i].IsSelfContained())
            SetName(names, i, FindPathInAlias(references[i].body));
}

std::string ResolveReference(const std::string& name, const VolumeTable& volumes)
{
    std::string path = WithoutServerSuffix(name);
    const size_t colon = path.find(':');
    if (colon != std::string::npos) {
        const std::string* mount_point = volumes.Find(std::string_view(path).substr(0, colon));
        if (mount_point) {
            std::string rest = path.substr(colon + 1);
            std::ranges::replace(rest, ':', '/');
            path = *mount_point + "/" + rest;
        }
    }
    std::ranges::replace(path, '\\', '/');
    return path;
}

}  // namespace kelvane
