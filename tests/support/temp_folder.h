#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace kelvane {

// A fresh folder that is gone with all its contents at the end of the test.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The path of a file of this name in the folder, which need not exist.
    std::string Path(const std::string& name) const { return (fRoot / name).string(); }
    const std::filesystem::path& Root() const { return fRoot; }
    // Writes a file and gives its path.
    std::string Write(const std::string& name, std::span<const uint8_t> bytes) const;

private:
    std::filesystem::path fRoot;
};

// All bytes of a file; empty when it cannot be read.
std::vector<uint8_t> ReadWhole(const std::string& path);

}  // namespace kelvane
