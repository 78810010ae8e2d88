#pragma once

#include <cstdint>
#include <limits>

#include "base/status.h"
#include "media/file_access.h"

namespace kelvane {

// A file with a logical position: moving it only stores it, and a read or write first makes the
// position of the system's handle agree. Runs of reads or writes thus cost no seek.
class PositionedFile {
public:
    // As FileOpen. 0 or -1.
    Status Open(const char* path, uint32_t flags);
    bool IsOpen() const { return fFile.IsOpen(); }

    void SetPosition(uint64_t position) { fPosition = position; }
    uint64_t Position() const { return fPosition; }
    // Bytes as measured at open.
    uint64_t Length() const { return fLength; }

    // Bytes read at the position, which moves past them: fewer than asked only at the end of the
    // file, 0 beyond it, -1 on failure.
    [[nodiscard]] int64_t Read(void* buffer, uint32_t bytes);
    // Writes all bytes at the position and moves past them. -1 when they could not be written
    // whole; the position then stays.
    Status Write(const void* bytes, uint64_t count);
    // Cuts the file off at the position.
    void Truncate();

private:
    static constexpr uint64_t kUnknown = std::numeric_limits<uint64_t>::max();

    bool Agree();

    FileHolder fFile;
    uint64_t fPosition = 0;
    uint64_t fReal = 0;  // of the handle
    uint64_t fLength = 0;
};

}  // namespace kelvane
