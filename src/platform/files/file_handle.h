#pragma once

#include <utility>

#include "base/status.h"

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
            static_cast<void>(Close());  // as the destructor
            fHandle = other.Release();
        }
        return *this;
    }
    FileHolder(const FileHolder&) = delete;
    FileHolder& operator=(const FileHolder&) = delete;
    // Whoever wrote closes before and asks: a file system may tell only then that it had no room.
    ~FileHolder() { static_cast<void>(Close()); }

    FileHandle Handle() const { return fHandle; }
    bool IsOpen() const { return fHandle != kNoFile; }
    // Gives the handle away; the holder is empty afterwards.
    FileHandle Release() { return std::exchange(fHandle, kNoFile); }
    // kOK also for a holder that is empty.
    Status Close();

private:
    FileHandle fHandle;
};

}  // namespace kelvane
