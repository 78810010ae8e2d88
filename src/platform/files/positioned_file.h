#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"
#include "platform/files/file_access.h"

namespace kelvane {

// A file that is written from a position of its own on. The position is stored only; every read
// and write is one system call that names its place.
class PositionedFile {
public:
    // As FileOpen.
    Status Open(const char* path, uint32_t flags);
    bool IsOpen() const { return fFile.IsOpen(); }
    FileHandle Handle() const { return fFile.Handle(); }
    // Bytes as measured at open.
    uint64_t Length() const { return fLength; }

    void SetPosition(uint64_t position) { fPosition = position; }
    uint64_t Position() const { return fPosition; }

    // Reads at the position, which does not move: `got` bytes, fewer than asked only where the
    // file, as it is now, ends. kEnd when there are none, kUnread when the system failed.
    Status Read(std::span<uint8_t> into, size_t& got) const;
    // Writes all bytes at the position and moves past them. Where they could not be written whole
    // the position stays.
    Status Write(std::span<const uint8_t> bytes);
    // Cuts the file off at the position; what is no regular file has nothing to cut off.
    Status Truncate();
    Status Close() { return fFile.Close(); }

private:
    FileHolder fFile;
    uint64_t fPosition = 0;
    uint64_t fLength = 0;
};

}  // namespace kelvane
