#include "platform/files/volume_table.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace kelvane {

namespace {

// Undoes "\040" (mount table, three octal digits) or "\x20" (udev, two hexadecimal ones).
std::string Unescape(std::string_view text, int base, std::string_view mark, size_t digits)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); i++) {
        const size_t at = i + mark.size();
        unsigned code = 0;
        if (text.substr(i).starts_with(mark) && at + digits <= text.size()) {
            const char* first = text.data() + at;
            const auto [end, error] = std::from_chars(first, first + digits, code, base);
            if (error == std::errc() && end == first + digits) {
                plain += static_cast<char>(code);
                i = at + digits - 1;
                continue;
            }
        }
        plain += text[i];
    }
    return plain;
}

// Device path to label.
std::map<std::string, std::string> ReadLabels(const std::string& folder)
{
    std::map<std::string, std::string> labels;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const auto device = std::filesystem::canonical(entry.path(), error);
        if (!error)
            labels[device.string()] = Unescape(entry.path().filename().string(), 16, "\\x", 2);
    }
    return labels;
}

bool IsSystemFolder(std::string_view mount_point)
{
    const auto below = [mount_point](std::string_view folder) {
        return mount_point == folder || (mount_point.starts_with(folder) &&
                                         mount_point.substr(folder.size()).starts_with('/'));
    };
    return below("/proc") || below("/sys") || below("/dev");
}

bool SameLetters(std::string_view a, std::string_view b)
{
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

}  // namespace

const VolumeTable& VolumeTable::System()
{
    static const VolumeTable table(ReadVolumes("/proc/self/mounts", "/dev/disk/by-label"));
    return table;
}

const std::string* VolumeTable::Find(std::string_view name) const
{
    const auto found = std::ranges::find_if(
        fVolumes, [name](const Volume& volume) { return SameLetters(volume.name, name); });
    return found == fVolumes.end() ? nullptr : &found->mount_point;
}

std::vector<Volume> ReadVolumes(const std::string& mounts, const std::string& labels)
{
    const auto label_of = ReadLabels(labels);
    std::vector<Volume> labelled, mounted;
    std::ifstream table(mounts);
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string device, mount_point;
        if (!(fields >> device >> mount_point)) continue;
        mount_point = Unescape(mount_point, 8, "\\", 3);
        if (IsSystemFolder(mount_point)) continue;
        std::error_code error;
        const auto real = std::filesystem::canonical(Unescape(device, 8, "\\", 3), error);
        const auto label = error ? label_of.end() : label_of.find(real.string());
        if (label != label_of.end()) labelled.push_back({label->second, mount_point});
        mounted.push_back({mount_point.substr(mount_point.rfind('/') + 1), mount_point});
    }
    labelled.insert(labelled.end(), mounted.begin(), mounted.end());
    return labelled;
}

}  // namespace kelvane
