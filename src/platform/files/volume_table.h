#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelvane {

// A mounted volume by one of its names.
struct Volume {
    std::string name;
    std::string mount_point;
};

// The volumes of the system by name, for paths that begin with one. Does not change once it is
// built, so all threads may share it.
class VolumeTable {
public:
    explicit VolumeTable(std::vector<Volume> volumes) : fVolumes(std::move(volumes)) {}
    // Those mounted when the program first asked.
    static const VolumeTable& System();

    // The mount point; null when there is no such volume. Letters match in either case, as on the
    // file systems that the names come from.
    const std::string* Find(std::string_view name) const;

private:
    std::vector<Volume> fVolumes;
};

// Reads a mount table (fstab(5) form, as in /proc/self/mounts) and a folder of links from labels to
// devices (udev's /dev/disk/by-label). Labels come first; a volume also has the last part of its
// mount point as a name.
std::vector<Volume> ReadVolumes(const std::string& mounts, const std::string& labels);

}  // namespace kelvane
