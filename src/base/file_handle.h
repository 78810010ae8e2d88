#pragma once

#include <utility>

namespace kelvane {

// A system file handle.
using FileHandle = int;
inline constexpr FileHandle kNoFile = -1;

// Owns a system file handle and closes it, so that every early return is safe.
class FileHolder {
public:
    explicit FileHolder(FileHandle handle = kNoFile) : fHandle(handle) {}
    FileHolder(FileHolder&& other) noexcept : fHandle(other.Release()) {}
    FileHolder& operator=(FileHolder&& other) noexcept
    {
        if (this != &other) {
            Close();
            fHandle = other.Release();
        }
        return *this;
    }
    FileHolder(const FileHolder&) = delete;
    FileHolder& operator=(const FileHolder&) = delete;
    ~FileHolder() { Close(); }

    FileHandle Handle() const { return fHandle; }
    bool IsOpen() const { return fHandle != kNoFile; }
    // Gives the handle away; the holder is empty afterwards.
    FileHandle Release() { return std::exchange(fHandle, kNoFile); }
    void Close();

private:
    FileHandle fHandle;
};

}  // namespace kelvane
