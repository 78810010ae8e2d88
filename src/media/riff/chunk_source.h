#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// A file of chunks as a walker sees it: heads through a small window, bodies straight from the
// file. Its position is its own; the file pointer does not count. Never asks for more memory than
// the file has bytes.
class ChunkSource {
public:
    ChunkSource(FileHandle file, ByteOrder order);

    uint64_t Position() const { return fPosition; }
    // Anywhere, beyond the end too, where nothing can be read.
    void Seek(uint64_t position) { fPosition = position; }
    // kError with the reason when the system could not read what was asked for last; kOK where the
    // file just ended.
    Status Failure() const { return fFailure; }
    // What it said first of all reads so far.
    Status Trouble() const { return fTrouble; }
    // Bytes of the file as it was found.
    uint64_t FileEnd() const { return fFileEnd; }

    // The next four bytes in the file's byte order; false when they are not there whole.
    bool Read32(uint32_t& value) { return ReadFour(value, fOrder); }
    // The next four bytes as a four-character code.
    bool ReadCode(uint32_t& code) { return ReadFour(code, ByteOrder::kBig); }
    // A size field, rounded up to even.
    bool ReadLength(uint32_t& length);
    // The next `length` bytes, or what is left of them in a truncated file. Null when there is
    // nothing, or when the bodies read so far are as large as the file (chunks that overlap) or
    // beyond all sense.
    std::unique_ptr<Bytes> ReadBody(uint32_t length);

private:
    bool ReadFour(uint32_t& value, ByteOrder order);
    bool FillWindow();
    void Fail();

    static constexpr uint64_t kMostBodies = 512 << 20;  // bytes; an index of a month of tape

    FileHandle fFile;
    ByteOrder fOrder;
    uint64_t fFileEnd;
    uint64_t fPosition = 0;
    uint64_t fBodiesLeft;  // bytes
    Status fFailure = kOK;
    Status fTrouble = kOK;
    uint64_t fWindowStart = 0;
    uint32_t fWindowSize = 0;
    std::array<uint8_t, 2048> fWindow;
};

}  // namespace kelvane
